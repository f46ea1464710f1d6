#include <vekdb/host/cookie.h>

#include "testing/print_strings.h"
#include "testing/random.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

using testing_support::Random;
using S = LightweightString<char>;
using W = LightweightString<wchar_t>;

static_assert(std::is_trivially_copyable_v<Cookie>);
static_assert(std::is_trivially_copyable_v<Quor::UUID>);
static_assert(sizeof(Quor::UUID) == 16);
static_assert(!std::is_convertible_v<const char*, Cookie>);
static_assert(!std::is_constructible_v<Cookie, const char*>);
static_assert(sizeof(CookieType) == 1);

namespace {

const char* const sampleText = "00112233445566778899aabbccddeeff12344d";

Cookie randomCookie(Random& random) {
    Cookie cookie;
    for (std::uint8_t& byte : cookie.uuid.bytes) {
        byte = static_cast<std::uint8_t>(random.below(3) * 100);
    }
    cookie.field = static_cast<std::uint16_t>(random.below(3) * 30000);
    cookie.type = static_cast<unsigned char>(random.below(256));
    return cookie;
}

}  // namespace

TEST(Cookie, DefaultIsTheNilOfTypeI) {
    const Cookie cookie;
    EXPECT_EQ(cookie.uuid, Quor::UUID());
    EXPECT_EQ(cookie.field, 0);
    EXPECT_EQ(cookie.type, 73);
    EXPECT_EQ(cookie.asString(false), "00000000000000000000000000000000000049");
}

TEST(Cookie, TextFormIsThirtyEightLowerCaseDigits) {
    const Cookie cookie(sampleText, false);
    EXPECT_EQ(cookie.uuid.bytes[0], 0x00);
    EXPECT_EQ(cookie.uuid.bytes[1], 0x11);
    EXPECT_EQ(cookie.uuid.bytes[15], 0xFF);
    EXPECT_EQ(cookie.field, 0x1234);
    EXPECT_EQ(cookie.type, 'M');
    EXPECT_EQ(cookie.asString(false), sampleText);
    EXPECT_EQ(cookie.asString(true), sampleText);
}

TEST(Cookie, EveryCookieReadsBackUnderEitherFlag) {
    Random random;
    for (int round = 0; round < 500; ++round) {
        const Cookie cookie = randomCookie(random);
        for (const bool written : {false, true}) {
            const S text = cookie.asString(written);
            ASSERT_EQ(Cookie(text.c_str(), false), cookie);
            ASSERT_EQ(Cookie(text.c_str(), true), cookie);
            ASSERT_EQ(Cookie(Quor::WStringFromAscii(text.c_str()), false), cookie);
            ASSERT_EQ(Cookie::fromText(text.view()), cookie);
        }
    }
}

TEST(Cookie, ParsingIgnoresCaseAndBlanksAround) {
    const Cookie cookie(sampleText, false);
    EXPECT_EQ(Cookie("00112233445566778899AABBCCDDEEFF12344D", false), cookie);
    EXPECT_EQ(Cookie((std::string(" \t") + sampleText + "\r\n ").c_str(), true), cookie);
    EXPECT_EQ(Cookie(W(L" 00112233445566778899AABBCCDDEEFF12344D\t"), false), cookie);
}

TEST(Cookie, AnythingElseIsTheDefaultCookie) {
    const std::string good(sampleText);
    EXPECT_EQ(Cookie(nullptr, false), Cookie());
    EXPECT_EQ(Cookie("", false), Cookie());
    EXPECT_EQ(Cookie("   ", false), Cookie());
    EXPECT_EQ(Cookie(good.substr(1).c_str(), false), Cookie());
    EXPECT_EQ(Cookie((good + "0").c_str(), false), Cookie());
    EXPECT_EQ(Cookie((good.substr(0, 20) + " " + good.substr(20)).c_str(), false), Cookie());
    for (std::size_t i = 0; i < good.size(); ++i) {
        std::string bad = good;
        bad[i] = 'g';
        EXPECT_EQ(Cookie(bad.c_str(), false), Cookie()) << i;
    }
    EXPECT_EQ(Cookie(W(), false), Cookie());
    EXPECT_EQ(Cookie(W(L"reel 12"), false), Cookie());
}

TEST(Cookie, WideCharactersAreNotCutToDigits) {
    W text = Quor::WStringFromAscii(sampleText);
    text.mutableData()[0] = 0x100 + '0';
    EXPECT_EQ(Cookie(text, false), Cookie());
}

TEST(Cookie, CompareIsZeroExactlyForEqualCookies) {
    const Cookie cookie(sampleText, false);
    Cookie other = cookie;
    EXPECT_EQ(cookie.compare(other), 0);
    other.type = 'B';
    EXPECT_NE(cookie.compare(other), 0);
    other = cookie;
    other.field ^= 1;
    EXPECT_NE(cookie.compare(other), 0);
    other = cookie;
    other.uuid.bytes[15] ^= 1;
    EXPECT_NE(cookie.compare(other), 0);
}

TEST(Cookie, CompareGoesByIdentityThenFieldThenType) {
    Cookie low;
    Cookie high;
    low.uuid.bytes[0] = 1;
    low.field = 9;
    low.type = 200;
    high.uuid.bytes[0] = 2;
    EXPECT_LT(low.compare(high), 0);
    high.uuid = low.uuid;
    high.field = 10;
    high.type = 0;
    EXPECT_LT(low.compare(high), 0);
    high.field = low.field;
    high.type = 201;
    EXPECT_LT(low.compare(high), 0);
    EXPECT_GT(high.compare(low), 0);
}

TEST(Cookie, CompareIsATotalOrder) {
    Random random;
    for (int round = 0; round < 500; ++round) {
        const Cookie a = randomCookie(random);
        const Cookie b = randomCookie(random);
        const Cookie c = randomCookie(random);
        ASSERT_EQ(a.compare(b) < 0, b.compare(a) > 0);
        if (a < b && b < c) {
            ASSERT_LT(a.compare(c), 0);
        }
    }
}

TEST(ConvertCookie, SetsTheType) {
    const Cookie cookie(sampleText, false);
    const Cookie m = convertCookie(cookie, CookieType(77), 255);
    EXPECT_EQ(m.type, 77);
    EXPECT_EQ(m.uuid, cookie.uuid);
    EXPECT_EQ(m.field, 0x1234);
    EXPECT_EQ(convertCookie(cookie, cookieTypeB, 255).type, 66);
}

TEST(ConvertCookie, SetsTheFieldUnlessItIs255) {
    const Cookie cookie(sampleText, false);
    EXPECT_EQ(convertCookie(cookie, cookieTypeM, 7).field, 7);
    EXPECT_EQ(convertCookie(cookie, cookieTypeM, 0).field, 0);
}

TEST(UUID, EqualIdentitiesHashAlikeAndOthersApart) {
    const Cookie cookie(sampleText, false);
    const Quor::UUID copy(cookie.uuid);
    EXPECT_EQ(copy, cookie.uuid);
    EXPECT_EQ(copy.hashValue(), cookie.uuid.hashValue());
    for (std::size_t i = 0; i < sizeof copy.bytes; ++i) {
        Quor::UUID other = copy;
        other.bytes[i] ^= 1;
        EXPECT_NE(other.hashValue(), copy.hashValue()) << i;
    }
}
