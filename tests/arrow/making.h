#pragma once

#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include <vekdb/arrow/c_data.h>

// Streams of Arrow as others make them: any type, nulls, offsets, dictionaries, and what no format
// allows. Counts what was not released.

namespace arrow_testing {

/// The bytes of values, one behind the other.
template <class Number>
std::string bytesOf(const std::vector<Number>& numbers) {
    std::string bytes(numbers.size() * sizeof(Number), '\0');
    if (!numbers.empty()) std::memcpy(bytes.data(), numbers.data(), bytes.size());
    return bytes;
}

/// Bits, the first in the lowest one: "1101".
inline std::string bitsOf(const std::string& ones) {
    std::string bytes((ones.size() + 7) / 8, '\0');
    for (std::size_t i = 0; i < ones.size(); ++i) {
        if (ones[i] == '1') bytes[i / 8] = static_cast<char>(bytes[i / 8] | 1 << (i % 8));
    }
    return bytes;
}

/// A column as it stands in buffers; "" is a buffer that is not there.
struct MadeColumn {
    std::string format;
    std::vector<std::string> buffers;  // validity first
    std::int64_t length = 0;
    std::int64_t offset = 0;
    std::int64_t nulls = -1;
    std::string name = "c";
    std::string metadata = {};
    std::vector<MadeColumn> dictionary = {};  // one or none
};

/// Texts with places of a type.
template <class Place = std::int32_t>
MadeColumn textsOf(const std::vector<std::string>& texts, const char* format = "u") {
    std::vector<Place> places = {0};
    std::string bytes;
    for (const std::string& text : texts) {
        bytes += text;
        places.push_back(static_cast<Place>(bytes.size()));
    }
    return {format, {"", bytesOf(places), bytes}, static_cast<std::int64_t>(texts.size())};
}

template <class Number>
MadeColumn numbersOf(const char* format, const std::vector<Number>& numbers) {
    return {format, {"", bytesOf(numbers)}, static_cast<std::int64_t>(numbers.size())};
}

/// A batch: the columns, and what the batch says of itself.
struct MadeBatch {
    std::vector<MadeColumn> columns;
    std::int64_t length = 0;
    std::int64_t offset = 0;
    std::string validity = {};
};

/// Makes a stream of the batches, whose schema is that of the first one's columns. It outlives
/// the stream and all it gave.
class StreamMaker {
public:
    explicit StreamMaker(std::vector<MadeBatch> batches, std::string metadata = {})
        : batches_(std::move(batches)), metadata_(std::move(metadata)) {}
    explicit StreamMaker(MadeColumn column) : StreamMaker({MadeBatch{{column}, column.length}}) {}

    ArrowArrayStream stream() {
        ArrowArrayStream made = {};
        made.get_schema = [](ArrowArrayStream* stream, ArrowSchema* out) {
            return of(stream).schema(*out);
        };
        made.get_next = [](ArrowArrayStream* stream, ArrowArray* out) {
            return of(stream).next(*out);
        };
        made.get_last_error = [](ArrowArrayStream* stream) { return of(stream).error; };
        made.release = [](ArrowArrayStream* stream) {
            --of(stream).held;
            stream->release = nullptr;
        };
        made.private_data = this;
        ++held;
        next_ = 0;
        return made;
    }

    int held = 0;  // what nobody released yet
    const char* error = nullptr;
    int failAt = -1;  // the batch that fails, -2 for the schema

private:
    static StreamMaker& of(ArrowArrayStream* stream) {
        return *static_cast<StreamMaker*>(stream->private_data);
    }
    template <class Structure>
    static void release(Structure* structure) {
        --static_cast<StreamMaker*>(structure->private_data)->held;
        structure->release = nullptr;
    }

    int schema(ArrowSchema& out) {
        if (failAt == -2) return 5;
        out = {};
        out.format = "+s";
        out.name = "";
        out.metadata = metadata_.empty() ? nullptr : metadata_.data();
        auto& children = schemas_.emplace_back();
        for (const MadeColumn& column : batches_.front().columns) {
            children.push_back(&oneSchema(column));
        }
        out.n_children = static_cast<std::int64_t>(children.size());
        out.children = children.data();
        out.release = release<ArrowSchema>;
        out.private_data = this;
        ++held;
        return 0;
    }
    ArrowSchema& oneSchema(const MadeColumn& column) {
        ArrowSchema& made = schemaStore_.emplace_back();
        made.format = column.format.c_str();
        made.name = column.name.c_str();
        made.metadata = column.metadata.empty() ? nullptr : column.metadata.data();
        made.flags = ARROW_FLAG_NULLABLE;
        if (!column.dictionary.empty()) made.dictionary = &oneSchema(column.dictionary[0]);
        made.release = [](ArrowSchema* schema) { schema->release = nullptr; };
        return made;
    }
    int next(ArrowArray& out) {
        if (failAt == static_cast<int>(next_)) return 5;
        out = {};
        if (next_ == batches_.size()) return 0;
        const MadeBatch& batch = batches_[next_++];
        auto& children = arrays_.emplace_back();
        for (const MadeColumn& column : batch.columns) children.push_back(&oneArray(column));
        auto& buffers = buffers_.emplace_back();
        buffers.push_back(batch.validity.empty() ? nullptr : batch.validity.data());
        out.length = batch.length;
        out.offset = batch.offset;
        out.null_count = batch.validity.empty() ? 0 : -1;
        out.n_buffers = 1;
        out.buffers = buffers.data();
        out.n_children = static_cast<std::int64_t>(children.size());
        out.children = children.data();
        out.release = release<ArrowArray>;
        out.private_data = this;
        ++held;
        return 0;
    }
    ArrowArray& oneArray(const MadeColumn& column) {
        auto& buffers = buffers_.emplace_back();
        for (const std::string& buffer : column.buffers) {
            buffers.push_back(buffer.empty() ? nullptr : buffer.data());
        }
        ArrowArray& made = arrayStore_.emplace_back();
        made.length = column.length;
        made.offset = column.offset;
        made.null_count = column.nulls;
        made.n_buffers = static_cast<std::int64_t>(buffers.size());
        made.buffers = buffers.data();
        if (!column.dictionary.empty()) made.dictionary = &oneArray(column.dictionary[0]);
        made.release = [](ArrowArray* array) { array->release = nullptr; };
        return made;
    }

    std::vector<MadeBatch> batches_;
    std::string metadata_;
    std::size_t next_ = 0;
    std::deque<ArrowSchema> schemaStore_;
    std::deque<ArrowArray> arrayStore_;
    std::deque<std::vector<ArrowSchema*>> schemas_;
    std::deque<std::vector<ArrowArray*>> arrays_;
    std::deque<std::vector<const void*>> buffers_;
};

}  // namespace arrow_testing
