#include <vekdb/host/keyed_hash.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

TEST(KeyedHash, IsTheSameForEqualTexts) {
    EXPECT_EQ(Quor::keyedHash("a name"), Quor::keyedHash(std::string("a name")));
    EXPECT_EQ(Quor::keyedHash(""), Quor::keyedHash({}));
}

TEST(KeyedHash, TellsTextsOfEverySizeApart) {
    std::set<std::uint64_t> seen;
    for (std::size_t size = 0; size < 100; ++size) {
        EXPECT_TRUE(seen.insert(Quor::keyedHash(std::string(size, '\0'))).second) << size;
        for (std::size_t at = 0; at < size; ++at) {
            std::string text(size, '\0');
            text[at] = 'x';
            EXPECT_TRUE(seen.insert(Quor::keyedHash(text)).second) << size << ' ' << at;
        }
    }
}

TEST(KeyedHash, SpreadsNumberedNamesOverTheLowBits) {
    constexpr std::size_t places = 4096;
    std::vector<unsigned> load(places);
    for (unsigned i = 0; i < 16 * places; ++i) {
        ++load[Quor::keyedHash("Extra " + std::to_string(i)) % places];
    }
    for (unsigned count : load) EXPECT_LT(count, 60u);
}
