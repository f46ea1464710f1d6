#include "formats/saving/rows_in_place.h"

#include <algorithm>

#include "formats/text/text_lines.h"

namespace vek::formats {

std::string_view endOfLine(std::string_view piece) {
    for (std::string_view end : {"\r\n", "\n", "\r"}) {
        if (piece.ends_with(end)) return piece.substr(piece.size() - end.size());
    }
    return {};
}

bool Saving::hasColumnsAsTheyCame() const {
    const Source& source = *log.source;
    if (columns.size() != source.columns.size()) return false;
    for (unsigned i = 0; i < columns.size(); ++i) {
        if (source.whereFrom(columns[i]) != i) return false;
    }
    return true;
}

bool Saving::hasUnnamedAsTheyCame() const {
    return log.source->named + log.unnamed.size() == log.source->columns.size();
}

bool Saving::hasNamesAsTheyCame() const {
    if (!hasColumnsAsTheyCame() || !hasUnnamedAsTheyCame()) return false;
    for (unsigned i = 0; i < columns.size(); ++i) {
        if (log.columnName(columns[i]) != log.source->columns[i].name) return false;
    }
    return true;
}

bool wasThere(const Log& log, std::string_view parameter) {
    const std::vector<ParameterText>& came = log.source->parameters;
    return std::any_of(came.begin(), came.end(),
                       [&](const ParameterText& one) { return sameText(one.name, parameter); });
}

std::vector<ParameterText> changedParameters(const Log& log) {
    std::vector<ParameterText> out;
    for (unsigned i = 0; i < log.table->get_num_params(); ++i) {
        ParameterText now{log.table->get_param_name(i), log.table->get_param_text(i)};
        const std::vector<ParameterText>& came = log.source->parameters;
        const bool isSame =
            i < came.size() && came[i].name == now.name && came[i].value == now.value;
        if (!isSame) out.push_back(std::move(now));
    }
    return out;
}

}  // namespace vek::formats
