#include "formats/log/own_parameters.h"

#include "formats/text/text_lines.h"

namespace vek::formats {

bool isTableFilesOwn(std::string_view parameterName) {
    const std::string_view name = trimmed(parameterName);
    return sameText(name, "VEKDB") || sameText(name, "V5_FIELD_MAP") ||
           sameText(name, listLayoutName) ||
           sameText(name.substr(0, exactCellsName.size()), exactCellsName);
}

}  // namespace vek::formats
