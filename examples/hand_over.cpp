// Hands a log over as a stream of Arrow, and reads it as an engine would: column by column.
// usage: hand_over LOG

#include <cstdio>

#include <vekdb/arrow/arrow.h>
#include <vekdb/host/text_util.h>
#include <vekdb/table.h>

// The bytes of a column of texts: the places where they begin and end stand in its second buffer.
static long long bytesOf(const ArrowArray& column) {
    const auto* places = static_cast<const std::int32_t*>(column.buffers[1]);
    return places[column.length] - places[0];
}

int main(int count, char** arguments) {
    if (count != 2) {
        return 2;
    }
    vekdb log(fromUTF8(arguments[1]), 1'000'000, true);

    // A picture of the log as it is now: what happens to the log later does not touch it.
    ArrowArrayStream stream = exportArrow(log);
    ArrowSchema schema = {};
    if (stream.get_schema(&stream, &schema) != 0) {
        std::printf("%s\n", stream.get_last_error(&stream));
        stream.release(&stream);
        return 3;
    }
    ArrowArray batch = {};
    while (stream.get_next(&stream, &batch) == 0 && batch.release != nullptr) {
        std::printf("a batch of %lld rows\n", static_cast<long long>(batch.length));
        for (std::int64_t i = 0; i < batch.n_children; ++i) {
            std::printf("  %s (%s): %lld bytes\n", schema.children[i]->name,
                        schema.children[i]->format, bytesOf(*batch.children[i]));
        }
        batch.release(&batch);
    }
    schema.release(&schema);
    stream.release(&stream);
}
