#include "vekdb/query/value_match.h"

#include <gtest/gtest.h>

#include <string>

#include "testing/random.h"

namespace {

TEST(FinderFor, AnswersAsValuesOfItsTypeMatchOrIsNotThere) {
    testing_support::Random random;
    constexpr DBFieldTypes::eType types[] = {DBFieldTypes::text,     DBFieldTypes::long_integer,
                                             DBFieldTypes::timecode, DBFieldTypes::timecode_s,
                                             DBFieldTypes::date,     DBFieldTypes::dos_date};
    for (int i = 0; i < 20000; ++i) {
        const std::string term = "0" + random.text("01:;.aA", 2);
        const std::string value = random.text("01:;.aA", 12);
        const TextSearch::Criteria criteria(TextSearch::Criterion(term.c_str()));
        const unsigned flags = random.oneIn(2) ? unsigned{TextSearch::eMatchCase} : 0;
        const DBFieldTypes::eType type = random.pick(types);
        const auto finder = finderFor(type, criteria, flags);
        const bool isRewritten = type == DBFieldTypes::timecode_s || type == DBFieldTypes::dos_date;
        ASSERT_EQ(!isRewritten, finder.has_value());
        if (!finder) continue;
        ASSERT_EQ(valueMatches(value, type, criteria, flags), finder->finds(value))
            << term << " in " << value;
    }
}

}  // namespace
