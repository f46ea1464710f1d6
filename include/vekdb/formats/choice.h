#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/formats/choice_operator.h>

/// Which rows of a log are meant, and in which order.
namespace vek {

struct LogInside;

/// Rows of a log: all of them as long as nothing narrows them down, in the order of the log as
/// long as nothing orders them. A value that knows no log: names are looked up when it is used.
class Choice {
public:
    Choice() = default;
    /// One condition as text, such as "Scene=12" or "Take>=3". Blanks around the name do not count,
    /// those behind the sign belong to the text that is looked for.
    Choice(std::string_view condition) { where(condition); }
    Choice(const char* condition) { where(condition); }
    Choice(const std::string& condition) { where(condition); }

    /// A further condition, as text or built of its parts. All must hold.
    Choice& where(std::string_view condition);
    Choice& where(std::string_view column, Operator op, std::string_view text = {});
    /// One of the conditions is enough.
    Choice& any(bool isEnough = true);
    /// Rows of which a pair of start and end columns holds the timecode or keycode.
    Choice& at(std::string_view code);
    /// Tagged rows.
    Choice& tagged(bool only = true);
    /// The first row of each value of a column, its case ignored. In this, the next two and `at`,
    /// "" takes back what was asked for.
    Choice& unique(std::string_view column);
    /// Rows whose value in a column another row has, too.
    Choice& duplicates(std::string_view column);

    /// By these columns, the first one first: as text, "Reel,Scene", or as names. Empty values
    /// come last.
    Choice& order(std::string_view columns);
    Choice& order(std::vector<std::string> columns);
    /// The exact reverse of the order.
    Choice& reverse(bool isReversed = true);
    /// At most so many rows, 0 for all, and so many left out in front of them.
    Choice& limit(std::size_t rows);
    Choice& offset(std::size_t rows);

private:
    friend class Log;
    friend struct LogInside;
    struct Built {
        std::string column;
        Operator op;
        std::string text;
    };

    std::vector<std::string> conditions_;
    std::vector<Built> built_;
    bool any_ = false;
    std::string at_;
    bool tagged_ = false;
    std::string unique_;
    std::string duplicates_;
    std::string order_;
    std::vector<std::string> orderNames_;
    bool reverse_ = false;
    std::size_t limit_ = 0;
    std::size_t offset_ = 0;
};

}  // namespace vek
