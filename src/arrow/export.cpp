#include <vekdb/arrow/arrow.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <utility>

#include "arrow/export_batch.h"
#include "arrow/export_schema.h"
#include "arrow/picture.h"

namespace {

constexpr std::size_t longestNameTold = 100;

// What a stream points to. The error's text takes no memory when memory has ended.
class Export {
public:
    Export(const VDBBase& source, const ArrowExport& how)
        : how_(how),
          picture_(pictureOf(source, how.tags != ArrowTags::none)),
          batches_(picture_, how, mostBytesCounted(how)) {}

    int schema(ArrowSchema* out) {
        if (out == nullptr) return fail(EINVAL, "there is no place for the schema");
        return guarded([&] { makeSchema(picture_, how_, *out); });
    }
    int next(ArrowArray* out) {
        if (out == nullptr) return fail(EINVAL, "there is no place for the batch");
        return guarded([&] {
            if (batches_.isAtEnd()) {
                out->release = nullptr;
            } else {
                batches_.make(*out);
            }
        });
    }
    const char* lastError() const { return *error_ != '\0' ? error_ : nullptr; }

private:
    template <class Call>
    int guarded(Call call) noexcept;
    int fail(int code, const char* why) noexcept;
    int failAt(std::size_t row, std::size_t column, int code, const char* why) noexcept;
    int refuse(const ArrowBadCell& cell) noexcept;
    int refuse(const ArrowLongCell& cell) noexcept;

    const ArrowExport how_;
    const ArrowPicture picture_;
    ArrowBatches batches_;
    char error_[400] = "";
};

// Whatever goes wrong stays on this side of the C functions.
template <class Call>
int Export::guarded(Call call) noexcept {
    *error_ = '\0';
    try {
        call();
        return 0;
    } catch (const ArrowBadCell& cell) {
        return refuse(cell);
    } catch (const ArrowLongCell& cell) {
        return refuse(cell);
    } catch (...) {
        return fail(ENOMEM, "memory is exhausted");
    }
}

int Export::fail(int code, const char* why) noexcept {
    std::snprintf(error_, sizeof error_, "%s", why);
    return code;
}

int Export::failAt(std::size_t row, std::size_t column, int code, const char* why) noexcept {
    const std::string& name = picture_.columns[column].name;
    const auto length = static_cast<int>(std::min(name.size(), longestNameTold));
    std::snprintf(error_, sizeof error_, "row %zu, column %zu \"%.*s\": %s", row + 1, column + 1,
                  length, name.c_str(), why);
    return code;
}

int Export::refuse(const ArrowBadCell& cell) noexcept {
    char why[200];
    std::snprintf(why, sizeof why,
                  "byte %zu of the cell, 0x%02X, is no UTF-8, which texts of Arrow are: have such "
                  "bytes replaced, or the columns handed over as binary",
                  cell.byte + 1, cell.value);
    return failAt(cell.row, cell.column, EILSEQ, why);
}

int Export::refuse(const ArrowLongCell& cell) noexcept {
    char why[240];
    std::snprintf(why, sizeof why,
                  "the cell takes %zu bytes, and texts whose places are counted in 32 bits take "
                  "2147483647 at most: let a batch have more bytes of text than that, which makes "
                  "the columns large texts",
                  cell.bytes);
    return failAt(cell.row, cell.column, EOVERFLOW, why);
}

Export& partsOf(ArrowArrayStream* stream) {
    return *static_cast<Export*>(stream->private_data);
}

void releaseStream(ArrowArrayStream* stream) {
    delete &partsOf(stream);
    stream->release = nullptr;
}

}  // namespace

ArrowArrayStream exportArrow(const VDBBase& source, const ArrowExport& how) {
    auto parts = std::make_unique<Export>(source, how);
    ArrowArrayStream stream = {};
    stream.get_schema = [](ArrowArrayStream* from, ArrowSchema* out) {
        return partsOf(from).schema(out);
    };
    stream.get_next = [](ArrowArrayStream* from, ArrowArray* out) {
        return partsOf(from).next(out);
    };
    stream.get_last_error = [](ArrowArrayStream* from) { return partsOf(from).lastError(); };
    stream.release = releaseStream;
    stream.private_data = parts.release();
    return stream;
}
