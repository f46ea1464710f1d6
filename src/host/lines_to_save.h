#pragma once

#include <vekdb/host/text_file.h>
#include "host/text_in_pieces.h"

/// Saves the lines that are appended to a file while this lives. They go to the disk while they
/// are made only where nobody else's code can run meanwhile: that code may rename what is saved,
/// and do whatever it likes to the file at the path.
class LinesToSave {
public:
    /// The path is read again at the end where others may run.
    LinesToSave(TextFile& file, const LightweightString<wchar_t>& path, bool othersMayRun)
        : file_(file), path_(path), othersMayRun_(othersMayRun) {
        if (!othersMayRun_) TextInPieces::beginSave(file_, path_);
    }
    LinesToSave(const LinesToSave&) = delete;
    LinesToSave& operator=(const LinesToSave&) = delete;

    /// Answers as TextFile::save does. Called once, last.
    bool end() {
        return othersMayRun_ ? file_.save(path_, TextFile::eLF) : TextInPieces::endSave(file_);
    }

private:
    TextFile& file_;
    const LightweightString<wchar_t>& path_;
    const bool othersMayRun_;
};
