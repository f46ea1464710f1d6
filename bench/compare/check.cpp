// Reads the rows of an answer, a CSV or a table file, and prints what two answers are compared
// by: how many rows, a sum that does not depend on their order, a checksum of the whole rows in
// their order, and one of the given columns alone, for answers whose ties may fall either way.
//     compare_check FILE [COLUMN...]

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::string contents(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class Rows {
public:
    explicit Rows(std::string_view text) : text_(text) {}

    // Requires that no value holds an end of line, which no value of the log does.
    bool next(std::vector<std::string>& values) {
        values.clear();
        if (text_.empty()) {
            return false;
        }
        std::size_t end = std::min(text_.find('\n'), text_.size());
        split(text_.substr(0, end), values);
        text_.remove_prefix(std::min(end + 1, text_.size()));
        return true;
    }

private:
    static void split(std::string_view line, std::vector<std::string>& values) {
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        bool quoted = false;
        values.emplace_back();
        for (std::size_t i = 0; i < line.size(); ++i) {
            bool twice = quoted && line.substr(i, 2) == "\"\"";
            if (line[i] == '"' && !twice) {
                quoted = !quoted;
            } else if (line[i] == ',' && !quoted) {
                values.emplace_back();
            } else {
                values.back() += line[i];
                i += twice ? 1 : 0;
            }
        }
    }

    std::string_view text_;
};

// Leaves the rows at the first that is data; true when there was a line of names.
bool readNames(Rows& rows, std::vector<std::string>& names) {
    bool there = rows.next(names);
    if (!there || !names[0].starts_with("VEKDB:")) {
        return there;
    }
    while (rows.next(names) && names[0] != "VEKDB") {
    }
    return rows.next(names) && rows.next(names) && rows.next(names);
}

constexpr std::uint64_t start = 0xCBF29CE484222325u;

std::uint64_t add(std::uint64_t hash, std::string_view value) {
    for (unsigned char c : value) {
        hash = (hash ^ c) * 0x100000001B3u;
    }
    return (hash ^ 0x1F) * 0x100000001B3u;
}

struct Sums {
    std::uint64_t rows = 0;
    std::uint64_t all = 0;
    std::uint64_t order = start;
    std::uint64_t keys = start;
};

void add(Sums& sums, const std::vector<std::string>& values, const std::vector<bool>& isKey) {
    std::uint64_t row = start;
    for (std::size_t i = 0; i < values.size(); ++i) {
        row = add(row, values[i]);
        if (i < isKey.size() && isKey[i]) {
            sums.keys = add(sums.keys, values[i]);
        }
    }
    ++sums.rows;
    sums.all += row * (row | 1);
    sums.order = (sums.order ^ row) * 0x9E3779B97F4A7C15u;
}

}  // namespace

int main(int count, char** arguments) {
    std::string text = count > 1 ? contents(arguments[1]) : std::string();
    Rows rows(text);
    std::vector<std::string> values;
    if (!readNames(rows, values)) {
        std::fputs("check: no rows to read\n", stderr);
        return 1;
    }
    std::vector<bool> isKey;
    for (const std::string& name : values) {
        isKey.push_back(std::find(arguments + 2, arguments + count, name) != arguments + count);
    }
    Sums sums;
    while (rows.next(values)) {
        add(sums, values, isKey);
    }
    auto hex = [](std::uint64_t value) { return static_cast<unsigned long long>(value); };
    std::printf("{\"rows\":%llu,\"all\":\"%016llx\",\"order\":\"%016llx\",\"keys\":\"%016llx\"}\n",
                hex(sums.rows), hex(sums.all), hex(sums.order), hex(sums.keys));
    return 0;
}
