#pragma once

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>

#include <string_view>

/// What a text is labelled as. Only timecode labels are read; the text of any
/// other kind of label stays as it is.
enum label_t { label_none = 0, label_timecode = 6 };

/// A timecode value: hours, minutes, seconds and frames of a tape or film.
///
/// It reads HH:MM:SS:FF, with any of : ; . , between the pairs and with one or two
/// digits of hours, and the eight digits HHMMSSFF, with a semicolon behind them
/// or not. Drop-frame counting is marked by a semicolon: the one before the
/// frames, or the one behind the digits. Minutes and seconds are below 60. Any
/// other text is not lost: both forms give it back as it came.
///
///     text             punctuated       database
///     01:02:03:04      01:02:03:04      01020304
///     01:02:03;04      01:02:03;04      01020304;
///     see reel 4       see reel 4       see reel 4
///
/// So either form, read again, gives the other one. Nothing gives nothing.
class VEKDB_PUBLIC time_def {
public:
    /// The longest form of a timecode.
    static constexpr unsigned maxForm = 11;

    /// Null counts as the empty text.
    time_def(const char* text, label_t label);

    /// Whether the text was a timecode, and one that drops frames.
    bool isTimecode() const { return isTimecode_; }
    bool isDropFrame() const { return isTimecode_ && isDropFrame_; }

    /// The compact form that columns of type timecode_s hold.
    LightweightString<char> get_database_str() const;

    /// The form for people.
    LightweightString<char> get_punctuated_str() const;

    /// The two forms without a string: written to the buffer, or the text itself
    /// where it is no timecode.
    static std::string_view databaseForm(std::string_view text, char (&buffer)[maxForm]);
    static std::string_view punctuatedForm(std::string_view text, char (&buffer)[maxForm]);

private:
    LightweightString<char> text_;
    bool isTimecode_ = false;
    bool isDropFrame_ = false;
};
