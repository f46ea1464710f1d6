#pragma once

namespace vek::formats {

/// What reasons and notes call the things that could have been asked for otherwise. An application
/// reads the names of the options that it has; a program puts the words of its own in their place,
/// which must live as long as what they are given to.
struct Terms {
    const char* maxBytes = "maxBytes";
    const char* maxCells = "maxCells";
    const char* maxOutput = "maxBytes";
    const char* encoding = "encoding";
    const char* sheet = "sheet";
    const char* from = "format";    ///< of what is read
    const char* format = "named";   ///< "the endings of these formats, or the format ..."
    const char* saving = "saveAs";  ///< "write a copy with ..."
    const char* at = "at";          ///< a condition on the ranges of rows
    const char* joining = "joinsUnlike";
    const char* rate = "rate";  ///< "expected ..."
    const char* shortReels = "shortReels";
    const char* names = "names";
    const char* tracks = "tracks";
    /// With a value that is likely, to be copied from the message.
    const char* likelyTracks = "tracks \"VA1A2\"";
    const char* likelyVideo = "videoFormat \"1080\"";
    const char* likelyAudio = "audioFormat \"48khz\"";
    const char* likelyRate = "rate \"24\"";
};

/// Those of an application.
inline constexpr Terms ownTerms = {};

}  // namespace vek::formats
