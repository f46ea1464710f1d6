#pragma once

#include <string_view>

#include <vekdb/table.h>

/// Reads the values of a table's shown rows: through `getField` where a subclass may have one of
/// its own, otherwise without making strings of them.
class ShownValue {
public:
    ShownValue(const vekdb& table, bool mayBeOverridden)
        : table_(table), mayBeOverridden_(mayBeOverridden) {}

    /// The value up to its first NUL. Valid until the next call.
    std::string_view operator()(unsigned row, unsigned column) {
        if (!mayBeOverridden_) {
            const dbrecord* record = table_.get_record(row);
            return record != nullptr ? record->fieldView(column).data() : "";
        }
        value_ = table_.getField(row, column);
        return value_.c_str();
    }

private:
    const vekdb& table_;
    bool mayBeOverridden_;
    LightweightString<char> value_;
};
