#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <vekdb/arrow/c_data.h>
#include "arrow/import_type.h"

/// A column as a stream announces it. A column that a dictionary stands behind has numbers of
/// its values.
struct ArrowColumnType {
    ArrowType type;
    std::unique_ptr<ArrowColumnType> dictionary;
};

/// The type of a field. Throws an ArrowImportFailure where it becomes no text.
ArrowColumnType columnTypeOf(const ArrowSchema& field);

/// The values of an array as texts. Refuses arrays that contradict their type or themselves, with
/// an ArrowImportFailure.
class ArrowCells {
public:
    ArrowCells(const ArrowColumnType& type, const ArrowArray& array);

    std::int64_t length() const { return array_.length; }
    bool isNull(std::int64_t i) const;
    /// The text of a value within the length, "" for a null. Valid until the next call.
    std::string_view at(std::int64_t i);
    /// A boolean, or a whole number.
    std::int64_t number(std::int64_t i) const;

private:
    template <class Number>
    Number read(std::int64_t i) const;
    std::string_view written(std::int64_t place);
    std::int64_t wholeAt(std::int64_t place) const;
    std::int64_t unsignedAt(std::int64_t place) const;
    bool bitAt(int buffer, std::int64_t place) const;
    std::string_view textAt(std::int64_t place) const;
    std::string_view viewAt(std::int64_t place) const;
    std::string_view farView(const char* view, std::int64_t size) const;
    void writeFloatAt(std::int64_t place);

    const ArrowType& type_;
    const ArrowArray& array_;
    std::unique_ptr<ArrowCells> dictionary_;
    std::string text_;
};
