#pragma once

#include <string_view>

#include <vekdb/host/text_file.h>
#include "host/text_arrival.h"

/// What the library's own loading and saving may do with a TextFile and nobody else: to look at
/// its lines while its text comes, and to send them away while they are made.
class TextInPieces {
public:
    using Path = LightweightString<wchar_t>;

    /// As TextFile::load, but returns while the text of a large file is still coming: whoever
    /// asks for a line waits for it, and may be thrown a TextArrival::Broken. False, and there
    /// are no lines, also for every file that load takes at once.
    static bool beginLoad(TextFile& file, const Path& path, char separator);
    static bool beginLoad(TextFile& file, int descriptor, char separator);
    /// What is there of the text, all of it or its beginning; waits for some of it at least.
    static std::string_view textSoFar(const TextFile& file);
    /// Waits for all of a text that is still coming; may throw what asking for a line may throw.
    static void awaitAll(const TextFile& file);
    /// The text that is still coming; null when all is there.
    static const Quor::Ptr<TextArrival>& arrival(const TextFile& file) { return file.arrival_; }

    /// Saves as TextFile::save does with eLF, while the lines are made. In a file that was not
    /// loaded, between the two calls lines are appended and nothing else is done; those that are
    /// there go to the disk from time to time instead of staying, but to a device or FIFO all at
    /// once at the end. endSave answers as save does and leaves no lines; without it the file at
    /// the path stays as it was.
    static void beginSave(TextFile& file, const Path& path);
    static bool endSave(TextFile& file);

private:
    static bool keepArriving(TextFile& file, Quor::Ptr<TextArrival> arrival, char separator);
};
