#pragma once

/// What a table sorts by: a list of column positions ended by a negative one, either its own
/// or a caller's, and the offset into the values.
class SortSettings {
public:
    static constexpr int most = 10;

    SortSettings() = default;
    SortSettings(const SortSettings&) = delete;
    SortSettings& operator=(const SortSettings&) = delete;

    void sortBy(int column) {
        own_[0] = column;
        own_[1] = -1;
        active_ = own_;
    }
    /// The list stays the caller's; null sorts by nothing.
    void sortBy(int* columns) {
        if (columns == nullptr) return sortBy(-1);
        active_ = columns;
    }
    int* columns() { return active_; }

    void setOffset(int offset) { offset_ = offset; }
    int offset() const { return offset_; }

    void reset() {
        sortBy(-1);
        offset_ = 0;
    }

private:
    int own_[most + 1] = {-1};
    int* active_ = own_;
    int offset_ = 0;
};
