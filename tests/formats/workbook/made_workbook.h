#pragma once

#include <string>
#include <string_view>
#include <vector>

/// A workbook as another program would have made it, for tests.
struct MadeWorkbook {
    struct Sheet {
        std::string name;
        std::string rows;         ///< "<row>...</row>"
        std::string state = {};   ///< "hidden"
        std::string behind = {};  ///< what stands behind the rows
    };
    std::vector<Sheet> sheets;
    std::string shared = {};      ///< "<si>...</si>"
    std::string formats = {};     ///< "<numFmt .../>"
    std::string styles = {};      ///< "<xf .../>"
    std::string properties = {};  ///< "<workbookPr .../>"

    std::string bytes() const;
};

/// A workbook of one sheet with these rows.
std::string workbookOf(std::string_view rows, std::string_view shared = {});
/// An archive of such entries.
std::string archiveOf(const std::vector<std::pair<std::string, std::string>>& entries);
