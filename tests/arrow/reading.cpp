#include "arrow/reading.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace arrow_testing {

namespace {

template <class Number>
Number numberAt(const void* from, std::int64_t i) {
    Number number;
    std::memcpy(&number, static_cast<const char*>(from) + i * std::int64_t{sizeof number},
                sizeof number);
    return number;
}

std::string textAt(const char*& at) {
    const auto length = numberAt<std::int32_t>(at, 0);
    std::string text(at + 4, static_cast<std::size_t>(length));
    at += 4 + length;
    return text;
}

// The characters of the texts, one after the other, by their numbers.
bool isUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto first = static_cast<unsigned char>(text[at]);
        const unsigned length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        if ((first >= 0x80 && first < 0xC0) || first > 0xF7) return false;
        if (at + length > text.size()) return false;
        std::uint32_t number = length == 1 ? first : first & (0x7FU >> length);
        for (unsigned i = 1; i < length; ++i) {
            const auto next = static_cast<unsigned char>(text[at + i]);
            if ((next & 0xC0) != 0x80) return false;
            number = number << 6 | (next & 0x3F);
        }
        static constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
        if (number < least[length] || number > 0x10FFFF) return false;
        if (number >= 0xD800 && number < 0xE000) return false;
        at += length;
    }
    return true;
}

class Reader {
public:
    explicit Reader(Contents& contents) : contents_(contents) {}

    void schema(const ArrowSchema& schema) {
        require(schema.format != nullptr && std::string(schema.format) == "+s", "a struct");
        require(schema.dictionary == nullptr && schema.release != nullptr, "a schema's end");
        contents_.metadata = decodedMetadata(schema.metadata);
        for (std::int64_t i = 0; i < schema.n_children; ++i) field(*schema.children[i]);
    }
    void batch(const ArrowArray& batch) {
        require(batch.null_count == 0 && batch.offset == 0, "no nulls and no offset");
        require(batch.n_buffers == 1 && batch.buffers != nullptr && batch.buffers[0] == nullptr,
                "one buffer, for validity, which is none");
        require(static_cast<std::size_t>(batch.n_children) == contents_.fields.size(),
                "a column for each field");
        require(batch.dictionary == nullptr && batch.release != nullptr, "a batch's end");
        require(batch.length > 0, "rows in each batch");
        const std::size_t first = contents_.rows.size();
        contents_.rows.resize(first + static_cast<std::size_t>(batch.length));
        contents_.batches.push_back(static_cast<std::size_t>(batch.length));
        for (std::int64_t i = 0; i < batch.n_children; ++i) {
            require(batch.children[i]->length == batch.length, "a column as long as the batch");
            column(*batch.children[i], contents_.fields[static_cast<std::size_t>(i)].format, first);
        }
    }

private:
    void require(bool holds, const char* what) {
        if (!holds) contents_.faults.push_back(what);
    }
    void field(const ArrowSchema& field) {
        require(field.format != nullptr && field.name != nullptr, "a type and a name");
        require(field.flags == 0 && field.n_children == 0 && field.dictionary == nullptr,
                "a plain column without nulls");
        require(field.release != nullptr, "a field that can be released by itself");
        require(isUtf8(field.name), "a name in UTF-8");
        contents_.fields.push_back({field.name, field.format, decodedMetadata(field.metadata)});
    }
    void column(const ArrowArray& column, const std::string& format, std::size_t first) {
        const bool isText = format.find_first_of("uUzZ") != format.npos;
        require(column.null_count == 0 && column.offset == 0 && column.n_children == 0,
                "a column without nulls");
        require(column.n_buffers == (isText ? 3 : 2), "the buffers of its type");
        require(column.release != nullptr, "a column that can be released by itself");
        require(column.buffers[0] == nullptr, "no validity");
        for (std::int64_t i = 1; i < column.n_buffers; ++i) {
            require(column.buffers[i] != nullptr, "a buffer");
            require(reinterpret_cast<std::uintptr_t>(column.buffers[i]) % 64 == 0, "alignment");
        }
        for (std::int64_t i = 0; i < column.length; ++i) {
            contents_.rows[first + static_cast<std::size_t>(i)].push_back(
                isText ? text(column, format, i) : tag(column, format, i));
        }
    }
    std::string text(const ArrowArray& column, const std::string& format, std::int64_t i) {
        const bool isLarge = format == "U" || format == "Z";
        const void* const places = column.buffers[1];
        const std::int64_t from =
            isLarge ? numberAt<std::int64_t>(places, i) : numberAt<std::int32_t>(places, i);
        const std::int64_t to =
            isLarge ? numberAt<std::int64_t>(places, i + 1) : numberAt<std::int32_t>(places, i + 1);
        require(i > 0 || from == 0, "texts that begin at the buffer's front");
        require(from <= to, "places that grow");
        if (from > to) return "";
        const char* const bytes = static_cast<const char*>(column.buffers[2]);
        const std::string value(bytes + from, static_cast<std::size_t>(to - from));
        require(format == "z" || format == "Z" || isUtf8(value), "texts in UTF-8");
        return value;
    }
    std::string tag(const ArrowArray& column, const std::string& format, std::int64_t i) {
        if (format == "C") return std::to_string(numberAt<std::uint8_t>(column.buffers[1], i));
        require(format == "b", "a boolean");
        const auto byte = numberAt<std::uint8_t>(column.buffers[1], i / 8);
        return (byte >> (i % 8) & 1) != 0 ? "true" : "false";
    }

    Contents& contents_;
};

void fail(Contents& contents, ArrowArrayStream& stream, int error) {
    contents.error = error;
    const char* text = stream.get_last_error(&stream);
    contents.errorText = text != nullptr ? text : "";
}

void readBatches(Contents& contents, ArrowArrayStream& stream) {
    Reader reader(contents);
    for (;;) {
        ArrowArray batch = {};
        const int error = stream.get_next(&stream, &batch);
        if (error != 0) return fail(contents, stream, error);
        if (batch.release == nullptr) return;
        reader.batch(batch);
        batch.release(&batch);
        if (batch.release != nullptr) contents.faults.push_back("a batch that was released");
    }
}

}  // namespace

std::vector<std::string> Contents::column(std::size_t i) const {
    std::vector<std::string> cells;
    for (const auto& row : rows) cells.push_back(row[i]);
    return cells;
}

Pairs decodedMetadata(const char* metadata) {
    Pairs pairs;
    if (metadata == nullptr) return pairs;
    const auto count = numberAt<std::int32_t>(metadata, 0);
    const char* at = metadata + 4;
    for (std::int32_t i = 0; i < count; ++i) {
        std::string key = textAt(at);
        pairs.emplace_back(std::move(key), textAt(at));
    }
    return pairs;
}

Contents contentsOf(ArrowArrayStream& stream) {
    Contents contents;
    ArrowSchema schema = {};
    const int error = stream.get_schema(&stream, &schema);
    if (error != 0) {
        fail(contents, stream, error);
    } else {
        Reader(contents).schema(schema);
        schema.release(&schema);
        readBatches(contents, stream);
    }
    stream.release(&stream);
    if (stream.release != nullptr) contents.faults.push_back("a stream that was released");
    return contents;
}

}  // namespace arrow_testing
