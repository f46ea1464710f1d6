#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <vekdb/table.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#include "model/budget.h"
#include "model/plain_model.h"

// Tables of many rows are put in order by the library and by the plain model: whatever the
// library prepares to sort fast, the order is that of the record comparison.

namespace {

using Random = std::mt19937_64;

constexpr unsigned columnCount = 4;  // the last one tells the rows apart
constexpr DBFieldTypes::eType typesOf[] = {DBFieldTypes::text, DBFieldTypes::timecode,
                                           DBFieldTypes::numeric, DBFieldTypes::text};

unsigned below(Random& random, unsigned limit) {
    return static_cast<unsigned>(random() % limit);
}

std::string randomCharacters(Random& random, const std::string& alphabet, unsigned longest) {
    std::string text;
    for (unsigned i = below(random, longest + 1); i > 0; --i) {
        text += alphabet[below(random, static_cast<unsigned>(alphabet.size()))];
    }
    return text;
}

std::string randomText(Random& random) {
    switch (below(random, 8)) {
        case 0:
            return "";
        case 1:
            return randomCharacters(random, "0123456789", 24);
        case 2:
            return std::string("a long beginning that many share ")
                .append(randomCharacters(random, "aB1", 3));
        case 3:
            return std::string("A")
                .append(randomCharacters(random, "01", 4))
                .append("c")
                .append(randomCharacters(random, "09", 3));
        case 4:
            return randomCharacters(random, " \t", 2).append(randomCharacters(random, "ab", 2));
        case 5:
            return randomCharacters(random, "_Zz[`{\x7F\xE9\xFF", 3);
        default:
            return randomCharacters(random, "aAbB01 ", 5);
    }
}

std::string randomTimecode(Random& random) {
    if (below(random, 5) == 0) {
        return randomText(random);
    }
    return std::string("0")
        .append(std::to_string(below(random, 2)))
        .append(":00:0")
        .append(std::to_string(below(random, 3)))
        .append(below(random, 2) != 0 ? ":0" : ";0")
        .append(std::to_string(below(random, 9)));
}

std::string randomValue(Random& random, unsigned column) {
    return column == 1 ? randomTimecode(random) : randomText(random);
}

struct Settings {
    std::vector<int> fields;
    int offset;
    int direction;
    int forced;

    explicit Settings(Random& random)
        : offset(below(random, 3) == 0 ? static_cast<int>(below(random, 9)) - 4 : 0),
          direction(static_cast<int>(below(random, 3)) - 1),
          forced(below(random, 4) == 0) {
        for (unsigned i = below(random, 4); i > 0; --i) {
            fields.push_back(static_cast<int>(below(random, columnCount)));
        }
        fields.push_back(-1);
    }
};

std::ostream& operator<<(std::ostream& out, const Settings& settings) {
    out << "fields";
    for (int field : settings.fields) {
        out << " " << field;
    }
    return out << " offset " << settings.offset << " direction " << settings.direction
               << " forced " << settings.forced;
}

class Pair {
public:
    Pair(Random& random, unsigned rows)
        : library_(std::vector<DBFieldDesc>{{"A", typesOf[0]},
                                            {"B", typesOf[1]},
                                            {"C", typesOf[2]},
                                            {"D", typesOf[3]}}),
          model_({{"A", typesOf[0]}, {"B", typesOf[1]}, {"C", typesOf[2]}, {"D", typesOf[3]}}) {
        library_.add_records(static_cast<int>(rows));
        model_.add_records(static_cast<int>(rows));
        for (unsigned row = 0; row < rows; ++row) {
            const bool blank = below(random, 12) == 0;
            for (unsigned column = 0; !blank && column + 1 < columnCount; ++column) {
                store(row, column, randomValue(random, column));
            }
            if (!blank) {
                store(row, columnCount - 1, std::to_string(row));
            }
        }
    }

    template <class Source, class Plain>
    static void sort(Source& library, Plain& model, Settings settings) {
        std::vector<int> fields = settings.fields;
        library.set_sortfields(settings.fields.data());
        model.set_sortfields(fields.data());
        library.set_sort_offset(settings.offset);
        model.set_sort_offset(settings.offset);
        library.sort(settings.direction, settings.forced);
        model.sort(settings.direction, settings.forced);
    }

    template <class Source, class Plain>
    static void expectEqualRows(const Source& library, const Plain& model) {
        ASSERT_EQ(library.get_num_records(), model.get_num_records());
        for (unsigned row = 0; row < model.get_num_records(); ++row) {
            ASSERT_EQ(line(library, row), line(model, row)) << "row " << row;
        }
    }

    vekdb& library() { return library_; }
    plain::Table& model() { return model_; }

private:
    // Not trimmed, so that leading blanks are there to be skipped.
    void store(unsigned row, unsigned column, const std::string& value) {
        library_.setField(row, column, value.c_str());
        model_.setField(row, column, value.c_str());
    }

    static std::string text(const std::string& value) { return value; }
    static std::string text(const LightweightString<char>& value) { return value.c_str(); }

    template <class Source>
    static std::string line(const Source& source, unsigned row) {
        std::string line;
        for (unsigned column = columnCount; column-- > 0;) {
            line.append("[").append(text(source.getField(row, column))).append("]");
        }
        return line;
    }

    vekdb library_;
    plain::Table model_;
};

unsigned randomRows(Random& random) {
    return below(random, 4) == 0 ? below(random, 1500) : below(random, 60);
}

}  // namespace

TEST(RandomOrders, TablesAreSortedAsRecordsCompare) {
    Budget budget(1, 30);
    while (budget.goesOn()) {
        const std::uint64_t seed = budget.nextSeed();
        Random random(seed);
        Pair pair(random, randomRows(random));
        for (int i = 0; i < 4; ++i) {
            const Settings settings(random);
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", " << settings);
            Pair::sort(pair.library(), pair.model(), settings);
            ASSERT_NO_FATAL_FAILURE(Pair::expectEqualRows(pair.library(), pair.model()));
        }
    }
}

TEST(RandomOrders, StackedViewsAreSortedAsRecordsCompare) {
    Budget budget(1, 30);
    while (budget.goesOn()) {
        const std::uint64_t seed = budget.nextSeed();
        Random random(seed);
        Pair pair(random, randomRows(random));
        VDBView below(&pair.library());
        VDBView view(&pair.library());
        plain::View plainBelow(&pair.model());
        plain::View plainView(&pair.model());
        view->baseView(below.get());
        plainBelow.hold();
        plainView.baseView(&plainBelow);
        below->displayAllRecords();
        plainBelow.displayAllRecords();
        view->displayAllRecords();
        plainView.displayAllRecords();
        for (int i = 0; i < 4; ++i) {
            const Settings settings(random);
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", " << settings);
            Pair::sort(*view, plainView, settings);
            ASSERT_NO_FATAL_FAILURE(Pair::expectEqualRows(*view, plainView));
        }
    }
}

TEST(RandomOrders, DifferentValuesAreTaggedAsTheModelDoes) {
    Budget budget(1, 30);
    while (budget.goesOn()) {
        const std::uint64_t seed = budget.nextSeed();
        Random random(seed);
        Pair pair(random, randomRows(random));
        const int column = static_cast<int>(below(random, columnCount));
        SCOPED_TRACE(testing::Message() << "seed " << seed << ", column " << column);
        EXPECT_EQ(pair.library().tag_all_different(column),
                  pair.model().tag_all_different(column));
        ASSERT_NO_FATAL_FAILURE(Pair::expectEqualRows(pair.library(), pair.model()));
        for (unsigned row = 0; row < pair.model().get_num_records(); ++row) {
            ASSERT_EQ(pair.library().get_tag(row), pair.model().get_tag(row)) << "row " << row;
        }
    }
}
