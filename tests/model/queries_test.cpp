#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <vekdb/table.h>
#include "model/budget.h"
#include "model/plain_model.h"

// Random queries over columns of every kind, each row of the answer compared with the rule
// applied to it alone.

namespace {

using Random = std::mt19937_64;

const std::vector<std::pair<std::string, unsigned>> columns = {
    {"Name", 'a'},      {"Notes", 'A'},        {"Start time", 't'}, {"End time", 't'},
    {"snd start", 'T'}, {"start keycode", 'a'}, {"end keycode", 'a'}, {"Mark", 't'},
    {"Code", 'T'},      {"Made", 'M'},         {"Count", 'n'},      {"start time", 't'},
};

unsigned below(Random& random, unsigned limit) {
    return static_cast<unsigned>(random() % limit);
}

template <std::size_t n>
std::string pick(Random& random, const char* const (&texts)[n]) {
    return texts[below(random, n)];
}

std::string randomWords(Random& random) {
    static const char* const words[] = {"dolly", "Dolly", "DO", "crane", "", "a", "Z", "take 2",
                                        "(slow)", "[x]", "^", "%", "\xC3\xA9", "y"};
    std::string text;
    for (unsigned i = below(random, 5); i > 0; --i) {
        text.append(pick(random, words)).append(below(random, 3) != 0 ? " " : "");
    }
    return text;
}

std::string randomTimecode(Random& random, const char* separator) {
    std::string text;
    for (int i = 0; i < 4; ++i) {
        text.append(i > 0 ? separator : "").append("0").append(std::to_string(below(random, 4)));
    }
    return text;
}

std::string randomValue(Random& random, unsigned type) {
    static const char* const separators[] = {":", ";", ".", ","};
    if (below(random, 6) == 0) {
        return "";
    }
    switch (type) {
        case 't':
            return below(random, 8) == 0 ? randomWords(random)
                                         : randomTimecode(random, separators[below(random, 4)]);
        case 'T':
            return below(random, 8) == 0
                       ? "see notes"
                       : randomTimecode(random, "").append(below(random, 3) == 0 ? ";" : "");
        case 'M':
            return below(random, 8) == 0 ? "never" : std::to_string(random() % 2000000000);
        case 'n':
            return std::to_string(below(random, 120));
        default:
            return randomWords(random);
    }
}

std::string randomQuery(Random& random, unsigned type) {
    static const char* const dates[] = {"19", "jan", "Mon ", "\n", ":0", "197", "nothing"};
    if (type == 'M') {
        return pick(random, dates);
    }
    std::string text = randomValue(random, type == 'T' && below(random, 2) != 0 ? 't' : type);
    if (!text.empty() && below(random, 2) != 0) {
        const unsigned start = below(random, static_cast<unsigned>(text.size()));
        text = below(random, 2) != 0 ? text.substr(start) : text.substr(0, start + 1);
    }
    return text;
}

class Pair {
public:
    Pair(Random& random, unsigned rows) : library_(descriptors()), model_(columns) {
        library_.add_records(static_cast<int>(rows));
        model_.add_records(static_cast<int>(rows));
        for (unsigned row = 0; row < rows; ++row) {
            for (unsigned column = 0; column < columns.size(); ++column) {
                const std::string value = randomValue(random, columns[column].second);
                library_.setField(row, column, value.c_str());
                model_.setField(row, column, value.c_str());
            }
        }
    }

    void ask(const std::vector<std::string>& texts) {
        dbrecord query(static_cast<unsigned short>(texts.size()));
        for (unsigned i = 0; i < texts.size(); ++i) {
            query.set_field(static_cast<int>(i), texts[i].c_str(), false);
        }
        library_.set_query(&query);
        model_.set_query(texts);
    }

    void expectEqualAnswers(int keepTags) {
        for (unsigned row = 0; row < model_.get_num_records(); ++row) {
            const int at = static_cast<int>(row);
            ASSERT_EQ(library_.match_record(at), model_.match_record(at)) << "row " << row;
        }
        EXPECT_EQ(library_.tag_matching_records(keepTags), model_.tag_matching_records(keepTags));
        for (unsigned row = 0; row < model_.get_num_records(); ++row) {
            ASSERT_EQ(library_.get_tag(row), model_.get_tag(row)) << "row " << row;
        }
    }

private:
    static std::vector<DBFieldDesc> descriptors() {
        std::vector<DBFieldDesc> fields;
        for (const auto& [name, type] : columns) {
            fields.push_back({name.c_str(), static_cast<DBFieldTypes::eType>(type)});
        }
        return fields;
    }

    vekdb library_;
    plain::Table model_;
};

std::vector<std::string> randomQueryTexts(Random& random) {
    std::vector<std::string> texts(columns.size());
    for (unsigned i = 1 + below(random, 3); i > 0; --i) {
        const unsigned column = below(random, static_cast<unsigned>(columns.size()));
        texts[column] = randomQuery(random, columns[column].second);
    }
    return texts;
}

std::string shown(const std::vector<std::string>& texts) {
    std::string line;
    for (const std::string& text : texts) {
        line.append("[").append(text).append("]");
    }
    return line;
}

}  // namespace

TEST(RandomQueries, FindTheRowsThatMatchByTheRule) {
    Budget budget(1, 30);
    while (budget.goesOn()) {
        const std::uint64_t seed = budget.nextSeed();
        Random random(seed);
        Pair pair(random, 1 + below(random, 60));
        for (int i = 0; i < 20; ++i) {
            const std::vector<std::string> texts = randomQueryTexts(random);
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", query " << shown(texts));
            pair.ask(texts);
            ASSERT_NO_FATAL_FAILURE(pair.expectEqualAnswers(static_cast<int>(below(random, 2))));
        }
    }
}
