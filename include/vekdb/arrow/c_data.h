#pragma once

#include <stdint.h>

// The structures of the Arrow C data interface and of its stream, as every library that speaks it
// declares them: whichever header comes first declares them, and all mean the same. C reads this
// header, too. docs/arrow.md says what stands in them.
//
// Whoever made a structure fills in `release`. Whoever has it calls `release` once, which sets the
// member to null, or moves the structure: copies its bytes and sets the member of the former place
// to null. One whose `release` is null holds nothing.

#ifdef __cplusplus
extern "C" {
#endif

#ifndef ARROW_C_DATA_INTERFACE
#define ARROW_C_DATA_INTERFACE

#define ARROW_FLAG_DICTIONARY_ORDERED 1
#define ARROW_FLAG_NULLABLE 2
#define ARROW_FLAG_MAP_KEYS_SORTED 4

/// The type of a column, or of a whole batch, whose columns are its children.
struct ArrowSchema {
    const char* format;    ///< the type, such as "u" for texts
    const char* name;      ///< of the column; may be null
    const char* metadata;  ///< pairs of keys and values, each with its length before; may be null
    int64_t flags;         ///< ARROW_FLAG_..., added up
    int64_t n_children;    ///< how many columns a batch has, 0 for a column of values
    struct ArrowSchema** children;         ///< one for each column
    struct ArrowSchema* dictionary;        ///< the type of what numbers stand for; null for others
    void (*release)(struct ArrowSchema*);  ///< ends it; null where it has ended or was moved
    void* private_data;                    ///< the maker's own
};

/// The values of a column, or of a batch, which its schema tells the type of.
struct ArrowArray {
    int64_t length;                       ///< how many values
    int64_t null_count;                   ///< -1 where it was not counted
    int64_t offset;                       ///< the first value that is meant, in all buffers
    int64_t n_buffers;                    ///< how many the type has
    int64_t n_children;                   ///< as in the schema
    const void** buffers;                 ///< which values are there, where they are, what they are
    struct ArrowArray** children;         ///< one for each column
    struct ArrowArray* dictionary;        ///< what numbers stand for; null for others
    void (*release)(struct ArrowArray*);  ///< ends it; null where it has ended or was moved
    void* private_data;                   ///< the maker's own
};

#endif

#ifndef ARROW_C_STREAM_INTERFACE
#define ARROW_C_STREAM_INTERFACE

/// Batches of one type, one after the other. Not for two threads at once.
struct ArrowArrayStream {
    /// 0, or the system's number of an error (errno); then `out` is untouched. Callers release it.
    int (*get_schema)(struct ArrowArrayStream*, struct ArrowSchema* out);
    /// The same; behind the last batch 0, and `out->release` is null.
    int (*get_next)(struct ArrowArrayStream*, struct ArrowArray* out);
    /// What went wrong in the last call that failed, until the next one; may be null.
    const char* (*get_last_error)(struct ArrowArrayStream*);
    void (*release)(struct ArrowArrayStream*);  ///< ends it; null where it has ended or was moved
    void* private_data;                         ///< the maker's own
};

#endif

#ifdef __cplusplus
}
#endif
