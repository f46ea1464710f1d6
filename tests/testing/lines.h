#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include <vekdb/host/text_file.h>
#include <vekdb/record.h>

// Table files and records as tests write and compare them.

namespace testing_support {

using Strings = std::vector<std::string>;

inline std::string joined(const Strings& lines, std::string_view end = "\n") {
    std::string text;
    for (const std::string& line : lines) {
        text.append(line).append(end);
    }
    return text;
}

// Text values in quotes, with commas between.
inline std::string quotedLine(const Strings& values) {
    std::string line;
    for (const std::string& value : values) {
        line.append(line.empty() ? "\"" : ",\"").append(value).append("\"");
    }
    return line;
}

// The lines before the records of a table of text columns.
inline Strings headerOf(const Strings& names) {
    return {"\"VEKDB:Rev 1\"", "\"VEKDB\"", quotedLine(Strings(names.size(), "10")),
            quotedLine(Strings(names.size(), "text")), quotedLine(names)};
}

inline Strings headerAnd(const Strings& names, const Strings& lines) {
    Strings all = headerOf(names);
    all.insert(all.end(), lines.begin(), lines.end());
    return all;
}

inline Strings valuesOf(const dbrecord& record) {
    Strings values;
    for (unsigned i = 0; i < record.get_num_fields(); ++i) {
        values.emplace_back(record.fieldView(i));
        EXPECT_EQ(values.back(), record.get_field(static_cast<unsigned short>(i)));
    }
    return values;
}

inline Strings linesOf(const TextFile& file) {
    Strings lines;
    for (unsigned i = 0; i < file.size(); ++i) {
        lines.emplace_back(file.line(i));
    }
    return lines;
}

}  // namespace testing_support
