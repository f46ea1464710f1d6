#include "vekdb/lines/table_text.h"

#include <string>

#include <vekdb/host/text_file.h>

void appendParameter(TextFile& file, std::string_view name, std::string_view value) {
    std::string line;
    line.append(1, '"').append(name).append(1, ':').append(value).append(1, '"');
    file.appendLine(std::string_view(line));
}
