// Any bytes as what is asked of each column and as the rows that are asked, a cell a line: the
// library finds the rows that the plain model finds.

#include <vector>

#include <vekdb/table.h>
#include "model/plain_model.h"
#include "target.h"

namespace {

using Columns = std::vector<std::pair<std::string, unsigned>>;
using Texts = std::vector<std::string>;

const Columns columns = {{"Name", 'a'},      {"Notes", 'A'},         {"Start time", 't'},
                         {"End time", 't'},  {"start keycode", 'a'}, {"end keycode", 'a'},
                         {"snd start", 'T'}, {"Count", 'n'}};
constexpr std::size_t mostRows = 40;

std::vector<DBFieldDesc> descriptors() {
    std::vector<DBFieldDesc> fields;
    for (const auto& [name, type] : columns) {
        fields.push_back({name.c_str(), static_cast<DBFieldTypes::eType>(type)});
    }
    return fields;
}

// The lines in groups, one cell for each column.
std::vector<Texts> groupsOf(std::string_view text) {
    std::vector<Texts> groups;
    Texts group;
    while (!text.empty() && groups.size() <= mostRows) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        group.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (group.size() == columns.size() || text.empty()) {
            group.resize(columns.size());
            groups.push_back(std::exchange(group, {}));
        }
    }
    return groups;
}

class Pair {
public:
    explicit Pair(const std::vector<Texts>& rows) : library_(descriptors()), model_(columns) {
        library_.add_records(static_cast<int>(rows.size()));
        model_.add_records(static_cast<int>(rows.size()));
        for (unsigned row = 0; row < rows.size(); ++row) {
            for (unsigned column = 0; column < columns.size(); ++column) {
                library_.setField(row, column, rows[row][column].c_str());
                model_.setField(row, column, rows[row][column].c_str());
            }
        }
    }

    std::string ask(const Texts& texts) {
        dbrecord query(static_cast<unsigned short>(texts.size()));
        for (unsigned i = 0; i < texts.size(); ++i) {
            query.set_field(static_cast<int>(i), texts[i].c_str(), false);
        }
        library_.set_query(&query);
        model_.set_query(texts);
        for (unsigned row = 0; row < model_.get_num_records(); ++row) {
            const int at = static_cast<int>(row);
            if (library_.match_record(at) != model_.match_record(at)) {
                return "another answer for row " + std::to_string(row);
            }
        }
        return library_.tag_matching_records(0) == model_.tag_matching_records(0)
                   ? ""
                   : "another number of rows";
    }

private:
    vekdb library_;
    plain::Table model_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(fuzz::textOf(data, size));
    text = text.substr(0, text.find('\0'));
    std::vector<Texts> groups = groupsOf(text);
    if (groups.size() < 2) {
        return 0;
    }
    const Texts asked = groups.front();
    groups.erase(groups.begin());
    // Twice: the second time the library has prepared itself for the question.
    Pair pair(groups);
    fuzz::require(pair.ask(asked));
    fuzz::require(pair.ask(asked));
    return 0;
}
