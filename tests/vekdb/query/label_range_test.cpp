// How values are compared with the text that a range is asked for.
#include "vekdb/query/label_range.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "testing/random.h"

namespace {

int sign(int order) {
    return (order > 0) - (order < 0);
}

// Memory of its own without a byte behind the text, so that the sanitizer sees reads past it.
class Exactly {
public:
    explicit Exactly(const std::string& text) : bytes_(new char[text.size()]), size_(text.size()) {
        std::copy(text.begin(), text.end(), bytes_.get());
    }
    const char* data() const { return bytes_.get(); }
    std::string_view view() const { return {data(), size_}; }

private:
    std::unique_ptr<char[]> bytes_;
    std::size_t size_;
};

TEST(CompareBytes, OrdersAsTheCLibraryAtEveryLength) {
    testing_support::Random random;
    for (std::size_t length = 0; length < 40; ++length) {
        const std::string a(length, random.pick(std::string("\x01Az\x80\xFF")));
        ASSERT_EQ(0, compareBytes(Exactly(a).data(), Exactly(a).data(), length));
        for (std::size_t at = 0; at < length; ++at) {
            std::string b = a;
            b.back() = random.pick(std::string("\x01z\xFF"));
            b[at] = random.pick(std::string("\x02By\x7F\xFE"));
            ASSERT_EQ(sign(std::memcmp(a.data(), b.data(), length)),
                      sign(compareBytes(Exactly(a).data(), Exactly(b).data(), length)))
                << length << " bytes, other at " << at;
        }
    }
}

TEST(CompareFront, OrdersAsTheCLibraryOverTheLengthOfTheText) {
    testing_support::Random random;
    unsigned equal = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string value = random.text("01:\x80", 20);
        std::string text = random.oneIn(2) ? value.substr(0, random.below(20)) : "";
        text += random.text("01:\x80", 3);
        const int expected = std::strncmp(value.c_str(), text.c_str(), text.size());
        ASSERT_EQ(sign(expected), sign(compareFront(Exactly(value).view(), text)))
            << value << " against " << text;
        equal += expected == 0;
    }
    EXPECT_GT(equal, 1000u);
    EXPECT_LT(equal, 19000u);
}

}  // namespace
