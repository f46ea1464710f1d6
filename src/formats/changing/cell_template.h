#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/changing/cell_function.h"
#include "formats/log/log.h"

namespace vek::formats {

/// A text with the cells of a row in it: "{Scene}-{Take|trim|upper}" and "{#}", a number that
/// counts. "{{" is a brace, and so is "}}".
class CellTemplate {
public:
    struct Part {
        std::string text;  ///< in front of the cell
        bool isNumber = false;
        unsigned column = noColumn;  ///< noColumn for a text alone
        std::vector<CellFunction> functions;
    };

    /// A Failure where a brace is left open, and for a column or a function that is not there,
    /// with the choices.
    CellTemplate(const Log& log, std::string_view text);

    bool counts() const;
    /// Adds what the part makes of a cell.
    static void addCell(std::string& out, const Part& part, std::string_view cell);
    const std::vector<Part>& parts() const { return parts_; }

    /// Adds the text for one row. `cellOf(column)` is what stands for a column's cell.
    template <class CellOf>
    void add(std::string& out, std::string_view number, CellOf cellOf) const {
        for (const Part& part : parts_) {
            out += part.text;
            if (part.isNumber)
                out += number;
            else if (part.column != noColumn)
                addCell(out, part, cellOf(part.column));
        }
    }

private:
    std::vector<Part> parts_;
};

}  // namespace vek::formats
