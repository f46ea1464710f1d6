#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "formats/writing/writers.h"

/// How the rows of one format are put in the place of others, each of which has lines of its own.
namespace vek::formats {

/// "\r\n", "\n", "\r" or nothing: what a piece of text ends with.
std::string_view endOfLine(std::string_view piece);

class RowsInPlace {
public:
    virtual ~RowsInPlace() = default;

    /// Whether rows that nobody changed are to be written as well, where the file will have these.
    virtual bool writesAll([[maybe_unused]] const std::vector<unsigned>& all) { return false; }
    /// Whether a piece of the source, with the end of its line, still reads as a row of the log.
    virtual bool reads(std::string_view piece, unsigned row) = 0;
    /// Whether lines of the row in front, which changed, may stand in those of a row that did not.
    virtual bool goesWith(unsigned /*changed*/) const { return false; }
    /// To be called once, with the rows that are to be written and all rows of the log that the
    /// file will have, in their order.
    virtual void begin(const Sheet& rows, const std::vector<unsigned>& all) {
        rows_ = &rows;
        all_ = &all;
    }
    /// Adds a row of these without the end of its line. The piece in whose place it goes is empty
    /// for a new one.
    virtual void add(std::string& text, unsigned row, std::string_view piece) = 0;
    /// The heading as it is then. What did not change of it stays as it came.
    virtual std::string heading(std::string_view came) = 0;
    /// Whether what stands between rows says something of them, and is asked for each: what is to
    /// stand there in front of a row of the log, or of none that the file will have.
    virtual bool saysBetween() const { return false; }
    virtual std::string between(std::string_view came,
                                [[maybe_unused]] std::optional<unsigned> row) {
        return std::string(came);
    }

protected:
    const Sheet& rows() const { return *rows_; }
    const std::vector<unsigned>& all() const { return *all_; }

private:
    const Sheet* rows_ = nullptr;
    const std::vector<unsigned>* all_ = nullptr;
};

/// What the forms are made of.
struct Saving {
    const Log& log;
    std::vector<unsigned> columns;  ///< in the order in which they are written
    std::string output;
    Losses& losses;

    /// Whether each column stands where it stood, and none was added.
    bool hasColumnsAsTheyCame() const;
    /// Whether the heading has no more names than it had.
    bool hasUnnamedAsTheyCame() const;
    /// All that, and each has its name.
    bool hasNamesAsTheyCame() const;
};

/// Parameters of the log that it did not have, or with another value, when it was read.
std::vector<ParameterText> changedParameters(const Log& log);
bool wasThere(const Log& log, std::string_view parameter);

}  // namespace vek::formats
