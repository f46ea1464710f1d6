#include "arrow/import_cells.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "arrow/import_failure.h"
#include "arrow/number_text.h"
#include "arrow/time_text.h"

using Kind = ArrowType::Kind;

namespace {

constexpr std::int64_t shortView = 12;  // bytes that stand in the view itself

[[noreturn]] void refuse(std::string why) {
    throw ArrowImportFailure{std::move(why)};
}

bool isWhole(const ArrowType& type) {
    return type.kind == Kind::signedNumbers || type.kind == Kind::unsignedNumbers;
}

bool hasNothingBehind(const ArrowType& type) {
    return type.kind == Kind::nulls || (type.kind == Kind::fixedTexts && type.bytes == 0);
}

// The last place of whose bytes the number can be told.
std::int64_t farthest(const ArrowType& type) {
    return std::numeric_limits<std::int64_t>::max() / std::max(type.bytes, 1U) / 2;
}

// What can be told of an array without knowing how much memory stands behind it.
void checkShape(const ArrowType& type, const ArrowArray& array) {
    if (array.release == nullptr) refuse("the array was released already");
    if (array.length < 0) refuse("its length is " + std::to_string(array.length));
    if (array.offset < 0) refuse("its offset is " + std::to_string(array.offset));
    if (array.length > farthest(type) - array.offset) refuse("its end is beyond all memory");
    const int fewest = fewestBuffers(type);
    if (array.n_buffers < fewest) {
        refuse("it has " + std::to_string(array.n_buffers) + " buffers and needs " +
               std::to_string(fewest));
    }
    if (fewest > 0 && array.buffers == nullptr) refuse("it has no buffers");
    if (array.length > 0 && !hasNothingBehind(type) && array.buffers[1] == nullptr) {
        refuse("its buffer of values is null");
    }
}

template <class Number>
Number numberAt(const void* from, std::int64_t i) {
    Number number;
    std::memcpy(&number, static_cast<const char*>(from) + i * std::int64_t{sizeof number},
                sizeof number);
    return number;
}

}  // namespace

ArrowColumnType columnTypeOf(const ArrowSchema& field) {
    const std::string_view format = field.format != nullptr ? field.format : "";
    const std::optional<ArrowType> type = typeOfFormat(format);
    if (!type) {
        refuse("its type, format \"" + std::string(format) +
               "\", does not become text: have it converted before");
    }
    ArrowColumnType found{*type, nullptr};
    if (field.dictionary == nullptr) return found;
    if (!isWhole(*type)) refuse("the values of its dictionary are not named by whole numbers");
    if (field.dictionary->dictionary != nullptr) refuse("its dictionary has a dictionary itself");
    found.dictionary = std::make_unique<ArrowColumnType>(columnTypeOf(*field.dictionary));
    return found;
}

ArrowCells::ArrowCells(const ArrowColumnType& type, const ArrowArray& array)
    : type_(type.type), array_(array) {
    checkShape(type_, array);
    if (type.dictionary == nullptr) return;
    if (array.dictionary == nullptr) refuse("it has no dictionary");
    dictionary_ = std::make_unique<ArrowCells>(*type.dictionary, *array.dictionary);
}

template <class Number>
Number ArrowCells::read(std::int64_t i) const {
    return numberAt<Number>(array_.buffers[1], i);
}

bool ArrowCells::bitAt(int buffer, std::int64_t place) const {
    return (numberAt<std::uint8_t>(array_.buffers[buffer], place / 8) >> (place % 8) & 1) != 0;
}

bool ArrowCells::isNull(std::int64_t i) const {
    if (type_.kind == Kind::nulls) return true;
    if (array_.null_count == 0 || array_.buffers[0] == nullptr) return false;
    return !bitAt(0, array_.offset + i);
}

std::int64_t ArrowCells::unsignedAt(std::int64_t place) const {
    switch (type_.bytes) {
        case 1:
            return read<std::uint8_t>(place);
        case 2:
            return read<std::uint16_t>(place);
        case 4:
            return read<std::uint32_t>(place);
        default:
            return static_cast<std::int64_t>(read<std::uint64_t>(place));
    }
}

std::int64_t ArrowCells::wholeAt(std::int64_t place) const {
    if (type_.kind == Kind::unsignedNumbers) return unsignedAt(place);
    switch (type_.bytes) {
        case 1:
            return read<std::int8_t>(place);
        case 2:
            return read<std::int16_t>(place);
        case 4:
            return read<std::int32_t>(place);
        default:
            return read<std::int64_t>(place);
    }
}

std::int64_t ArrowCells::number(std::int64_t i) const {
    const std::int64_t place = array_.offset + i;
    return type_.kind == Kind::booleans ? (bitAt(1, place) ? 1 : 0) : wholeAt(place);
}

std::string_view ArrowCells::textAt(std::int64_t place) const {
    const bool isLarge = type_.bytes == sizeof(std::int64_t);
    const std::int64_t from = isLarge ? read<std::int64_t>(place) : read<std::int32_t>(place);
    const std::int64_t to = isLarge ? read<std::int64_t>(place + 1) : read<std::int32_t>(place + 1);
    if (from < 0 || to < from) {
        refuse("a value reaches from byte " + std::to_string(from) + " to byte " +
               std::to_string(to));
    }
    if (from == to) return "";
    const char* const bytes = static_cast<const char*>(array_.buffers[2]);
    if (bytes == nullptr) refuse("its buffer of bytes is null");
    return {bytes + from, static_cast<std::size_t>(to - from)};
}

// The buffers' sizes stand in the last one, so what a view asks for can be held against them.
std::string_view ArrowCells::farView(const char* view, std::int64_t size) const {
    const auto buffer = numberAt<std::int32_t>(view, 2);
    const auto from = numberAt<std::int32_t>(view, 3);
    const std::int64_t buffers = array_.n_buffers - 3;
    const void* const sizes = array_.buffers[array_.n_buffers - 1];
    if (buffer < 0 || buffer >= buffers || sizes == nullptr) {
        refuse("a value stands in buffer " + std::to_string(buffer) + " of " +
               std::to_string(buffers));
    }
    if (from < 0 || from + size > numberAt<std::int64_t>(sizes, buffer)) {
        refuse("a value reaches beyond its buffer");
    }
    const char* const bytes = static_cast<const char*>(array_.buffers[2 + buffer]);
    if (bytes == nullptr) refuse("a buffer of bytes is null");
    return {bytes + from, static_cast<std::size_t>(size)};
}

std::string_view ArrowCells::viewAt(std::int64_t place) const {
    const char* const view =
        static_cast<const char*>(array_.buffers[1]) + place * std::int64_t{type_.bytes};
    const std::int64_t size = numberAt<std::int32_t>(view, 0);
    if (size < 0) refuse("a value has " + std::to_string(size) + " bytes");
    if (size > shortView) return farView(view, size);
    return {view + sizeof(std::int32_t), static_cast<std::size_t>(size)};
}

void ArrowCells::writeFloatAt(std::int64_t place) {
    if (type_.bytes == sizeof(double)) return writeFloat(read<double>(place), text_);
    const bool isHalf = type_.bytes == sizeof(std::uint16_t);
    writeFloat(isHalf ? fromHalf(read<std::uint16_t>(place)) : read<float>(place), text_);
}

// The types whose values are written anew.
std::string_view ArrowCells::written(std::int64_t place) {
    const char* const values = static_cast<const char*>(array_.buffers[1]);
    switch (type_.kind) {
        case Kind::signedNumbers:
            writeInteger(wholeAt(place), text_);
            break;
        case Kind::unsignedNumbers:
            writeUnsigned(static_cast<std::uint64_t>(wholeAt(place)), text_);
            break;
        case Kind::floats:
            writeFloatAt(place);
            break;
        case Kind::decimals:
            writeDecimal(values + place * std::int64_t{type_.bytes}, type_.bytes, type_.digits,
                         text_);
            break;
        case Kind::days:
            writeDay(wholeAt(place), text_);
            break;
        case Kind::dayTimes:
            writeDayTime(wholeAt(place), type_.digits, text_);
            break;
        default:
            writeInstant(wholeAt(place), type_.digits, type_.isZoned, text_);
            break;
    }
    return text_;
}

std::string_view ArrowCells::at(std::int64_t i) {
    if (isNull(i)) return "";
    const std::int64_t place = array_.offset + i;
    if (dictionary_ != nullptr) {
        const std::int64_t value = wholeAt(place);
        if (value < 0 || value >= dictionary_->length()) {
            refuse("value " + std::to_string(value) + " of a dictionary of " +
                   std::to_string(dictionary_->length()) + " is asked for");
        }
        return dictionary_->at(value);
    }
    switch (type_.kind) {
        case Kind::booleans:
            return bitAt(1, place) ? "true" : "false";
        case Kind::texts:
            return textAt(place);
        case Kind::views:
            return viewAt(place);
        case Kind::fixedTexts:
            return {static_cast<const char*>(array_.buffers[1]) + place * std::int64_t{type_.bytes},
                    type_.bytes};
        default:
            return written(place);
    }
}
