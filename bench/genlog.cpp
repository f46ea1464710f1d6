// Writes a clip log of any number of rows from a seed: the same seed gives the same bytes on
// every machine. The benchmarks read the plain log; samples/dailies.vek is the --dailies one.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Text = std::string;

// SplitMix64: small, quick, and the same everywhere, which the standard distributions are not.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    unsigned below(unsigned limit) {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
        mixed ^= mixed >> 31;
        return static_cast<unsigned>((mixed >> 32) * limit >> 32);
    }

private:
    std::uint64_t state_;
};

template <std::size_t N>
using Words = std::array<std::string_view, N>;

constexpr Words<8> sizes = {"WS", "MWS", "MS", "MCU", "CU", "ECU", "2S", "OTS"};
constexpr Words<12> people = {"Anna",      "Inspector",       "the twins", "Marlow",
                              "driver",    "both girls",      "the crowd", "Dr Hale",
                              "the clerk", "Anna and Marlow", "old man",   "nobody"};
constexpr Words<10> places = {"at the window", "in the doorway", "by the car",  "on the stairs",
                              "at the table",  "in the rain",    "by the lamp", "on the bridge",
                              "in the hall",   "at the station"};
constexpr Words<28> moves = {"static",      "slow pan L", "pan R",       "tilt up",   "tilt down",
                             "slow push",   "pull back",  "handheld",    "crane up",  "crane down",
                             "whip pan",    "zoom in",    "rack focus",  "steadicam", "follow",
                             "insert",      "reaction",   "clean plate", "dolly in",  "high angle",
                             "low angle",   "dutch tilt", "lock-off",    "track L",   "track R",
                             "slow motion", "silhouette", "pick-up"};
constexpr Words<14> remarks = {"good",           "NG sound",     "boom in shot",  "soft at the end",
                               "best for eyes",  "false start",  "print",         "hair in gate",
                               "line dropped",   "plane over",   "good for head", "MOS",
                               "flare on entry", "hold for edit"};

// One clip of the day, in frames at 24 a second from the start of its roll.
struct Clip {
    std::uint64_t number = 0;
    unsigned camera = 0;
    unsigned roll = 0;
    unsigned clipOfRoll = 0;
    unsigned scene = 1;
    bool added = false;
    unsigned setup = 0;
    unsigned take = 0;
    unsigned start = 0;
    unsigned length = 0;
    unsigned soundSlip = 0;
    unsigned description = 0;
    unsigned remark = 0;
    bool circled = false;

    unsigned end() const { return start + length; }
};

void pad(Text& out, std::uint64_t value, unsigned digits) {
    char text[20];
    unsigned count = 0;
    for (; value > 0 || count < digits; value /= 10) {
        text[count++] = static_cast<char>('0' + value % 10);
    }
    while (count > 0) {
        out += text[--count];
    }
}

void number(Text& out, std::uint64_t value) {
    pad(out, value, 1);
}

void timecode(Text& out, std::uint64_t frames, unsigned rate) {
    pad(out, frames / (3600u * rate) % 24, 2);
    out += ':';
    pad(out, frames / (60u * rate) % 60, 2);
    out += ':';
    pad(out, frames / rate % 60, 2);
    out += ':';
    pad(out, frames % rate, 2);
}

// Footage of 4-perf 35 mm: 16 frames a foot.
void footage(Text& out, std::uint64_t frames) {
    pad(out, frames / 16 % 10000, 4);
    out += '+';
    pad(out, frames % 16, 2);
}

void reel(Text& out, const Clip& clip) {
    out += static_cast<char>('A' + clip.camera);
    pad(out, clip.roll, 3);
}

void soundReel(Text& out, const Clip& clip) {
    out += 'S';
    pad(out, clip.roll, 3);
}

void name(Text& out, const Clip& clip) {
    reel(out, clip);
    out += 'C';
    pad(out, clip.clipOfRoll, 3);
}

void shot(Text& out, const Clip& clip) {
    out += static_cast<char>('A' + clip.setup);
}

void scene(Text& out, const Clip& clip) {
    number(out, clip.scene);
    if (clip.added) {
        out += 'A';
    }
}

void take(Text& out, const Clip& clip) {
    number(out, clip.take);
}

void description(Text& out, const Clip& clip) {
    unsigned code = clip.description;
    for (auto words : {std::span<const std::string_view>(sizes), {people}, {places}, {moves}}) {
        out += words[code % words.size()];
        code /= static_cast<unsigned>(words.size());
        out += ' ';
    }
    out.pop_back();
}

void notes(Text& out, const Clip& clip) {
    if (clip.remark < remarks.size()) {
        out += remarks[clip.remark];
    }
}

constexpr unsigned filmRate = 24;
constexpr unsigned videoRate = 30;

// Every roll begins on an hour of its own.
std::uint64_t hourOf(const Clip& clip, unsigned rate) {
    return (clip.roll % 23 + 1) * 3600u * rate;
}

void filmTime(Text& out, const Clip& clip, unsigned frame) {
    timecode(out, hourOf(clip, filmRate) + frame, filmRate);
}

// Pulldown makes five video frames of four film frames.
unsigned videoFrames(unsigned frame) {
    return frame * 5u / 4u;
}

void videoTime(Text& out, const Clip& clip, unsigned frame) {
    timecode(out, hourOf(clip, videoRate) + videoFrames(frame), videoRate);
}

void soundTime(Text& out, const Clip& clip, unsigned frame) {
    timecode(out, 10 * 3600u * filmRate + clip.roll % 8 * 3600u * filmRate + frame + clip.soundSlip,
             filmRate);
}

void keycode(Text& out, const Clip& clip, unsigned frame) {
    out += "KJ ";
    pad(out, 230000 + (clip.roll * 4u + clip.camera) % 700000, 6);
    out += ' ';
    footage(out, 3200 + frame);
}

void inkcode(Text& out, const Clip& clip, unsigned frame) {
    pad(out, clip.roll % 1000, 3);
    out += '-';
    footage(out, 16000 + frame);
}

void labReel(Text& out, const Clip& clip) {
    out += "LR";
    pad(out, clip.roll, 3);
}

void cookie(Text& out, const Clip& clip) {
    char text[40];
    Random random(clip.number + 1);
    int used = 0;
    for (int part = 0; part < 4; ++part) {
        used += std::snprintf(text + used, sizeof text - static_cast<unsigned>(used), "%08x",
                              random.below(0xFFFFFFFFu));
    }
    out += text;
    out += "00004d";
}

using Write = void (*)(Text&, const Clip&);

struct Column {
    std::string_view name;
    std::string_view type;
    unsigned minimumWidth;
    Write write;
};

constexpr Column columnName = {"Name", "text", 32, name};
constexpr Column columnReel = {"Reel", "text", 10, reel};
constexpr Column columnScene = {"Scene", "text", 24, scene};
constexpr Column columnShot = {"Shot", "text", 24, shot};
constexpr Column columnTake = {"Take", "long", 4, take};
constexpr Column columnDescription = {"Description", "text", 64, description};
constexpr Column columnNotes = {"Notes", "text", 100, notes};
constexpr Column columnSoundReel = {"snd reel", "text", 10, soundReel};
constexpr Column columnKeyStart = {"start keycode", "text", 17, [](Text& out, const Clip& clip) {
                                       keycode(out, clip, clip.start);
                                   }};
constexpr Column columnKeyEnd = {
    "end keycode", "text", 17, [](Text& out, const Clip& clip) { keycode(out, clip, clip.end()); }};
constexpr Column columnSoundStart = {"snd start", "timecode", 12, [](Text& out, const Clip& clip) {
                                         soundTime(out, clip, clip.start);
                                     }};
constexpr Column columnTag = {"Tag", "text", 1,
                              [](Text& out, const Clip& clip) { out += clip.circled ? '1' : '0'; }};

constexpr Column columnFilm = {"film_origin", "text", 3,
                               [](Text& out, const Clip&) { out += "35"; }};
constexpr Column columnPulldown = {"pulldown", "text", 3,
                                   [](Text& out, const Clip&) { out += 'A'; }};
constexpr Column columnDay = {"cam_date", "text", 6, [](Text& out, const Clip& clip) {
                                  out += "2403";
                                  pad(out, 1 + clip.roll / 12 % 28, 2);
                              }};

constexpr Column plainLog[] = {
    columnReel,
    columnScene,
    columnShot,
    columnTake,
    {"Start time", "timecode", 12,
     [](Text& out, const Clip& clip) { filmTime(out, clip, clip.start); }},
    {"End time", "timecode", 12,
     [](Text& out, const Clip& clip) { filmTime(out, clip, clip.end()); }},
    columnDescription,
    columnNotes,
    columnSoundReel,
    columnKeyStart,
    columnKeyEnd,
    columnDay,
    columnFilm,
    columnPulldown,
    {"sequence", "text", 2, [](Text& out, const Clip& clip) { number(out, clip.camera + 1); }},
    columnTag,
};

constexpr Column dailies[] = {
    {"Cookie", "text", 12, cookie},
    columnName,
    columnReel,
    columnScene,
    columnShot,
    columnTake,
    {"Start time", "timecode", 12,
     [](Text& out, const Clip& clip) { videoTime(out, clip, clip.start); }},
    {"End time", "timecode", 12,
     [](Text& out, const Clip& clip) { videoTime(out, clip, clip.end()); }},
    {"Duration", "timecode", 16,
     [](Text& out, const Clip& clip) {
         timecode(out, videoFrames(clip.end()) - videoFrames(clip.start), videoRate);
     }},
    columnDescription,
    columnNotes,
    columnSoundStart,
    {"snd end", "timecode", 12,
     [](Text& out, const Clip& clip) { soundTime(out, clip, clip.end()); }},
    columnSoundReel,
    {"start 24P code", "timecode", 12,
     [](Text& out, const Clip& clip) { filmTime(out, clip, clip.start); }},
    {"end 24P code", "timecode", 12,
     [](Text& out, const Clip& clip) { filmTime(out, clip, clip.end()); }},
    {"24P reel", "text", 10, reel},
    columnKeyStart,
    columnKeyEnd,
    {"film duration", "text", 9, [](Text& out, const Clip& clip) { footage(out, clip.length); }},
    {"start camcode", "timecode", 12,
     [](Text& out, const Clip& clip) { timecode(out, clip.start, filmRate); }},
    {"end camcode", "timecode", 12,
     [](Text& out, const Clip& clip) { timecode(out, clip.end(), filmRate); }},
    {"cam reel", "text", 10, reel},
    columnDay,
    {"start inkcode", "text", 15,
     [](Text& out, const Clip& clip) { inkcode(out, clip, clip.start); }},
    {"end inkcode", "text", 15,
     [](Text& out, const Clip& clip) { inkcode(out, clip, clip.end()); }},
    {"lab reel", "text", 10, labReel},
    columnFilm,
    columnPulldown,
    columnTag,
};

struct Log {
    std::span<const Column> columns;
    std::vector<std::string_view> parameters;
    unsigned clipsOfRoll;
    unsigned firstScene;
    unsigned scenes;
};

const Log plain = {plainLog, {"VEKDB:Rev 1", "FPS:24"}, 60, 1, 180};
const Log ofDailies = {dailies,
                       {"VEKDB:Rev 1", "Project:The Long Platform", "Day:12 of 31", "FPS:30",
                        "V5_FIELD_MAP:3 4 5 6 7 8 10 11 18 19 15 16 -1 -2 -9 -12 -13 -14 -17 -20 "
                        "-21 -22 -23 -24 -25 -26 -27 -28 -29 -30"},
                       14,
                       60,
                       10};

// Shoots the log clip by clip: setups of a few takes, rolls of a few dozen clips.
class Shoot {
public:
    Shoot(std::uint64_t seed, const Log& log) : random_(seed), log_(log) {}

    const Clip& next() {
        loadCamera();
        chooseTake();
        clip_.start = clip_.end() + 24 * (1 + random_.below(20));
        clip_.length = 24 * (4 + random_.below(41)) + random_.below(24);
        clip_.soundSlip = random_.below(48);
        clip_.remark = random_.below(3 * static_cast<unsigned>(remarks.size()));
        clip_.circled = random_.below(3) == 0;
        clip_.number = shot_++;
        return clip_;
    }

private:
    void loadCamera() {
        bool fresh = shot_ % log_.clipsOfRoll == 0;
        if (fresh) {
            std::uint64_t roll = shot_ / log_.clipsOfRoll;
            clip_.camera = static_cast<unsigned>(roll % 3);
            clip_.roll = static_cast<unsigned>(roll / 3 + 1);
            clip_.clipOfRoll = 0;
            clip_.start = clip_.length = 0;
        }
        ++clip_.clipOfRoll;
    }

    void chooseTake() {
        ++clip_.take;
        if (clip_.take > 1 && random_.below(4) != 0) {
            return;
        }
        clip_.take = 1;
        clip_.setup = random_.below(8);
        clip_.scene = log_.firstScene + random_.below(log_.scenes);
        clip_.added = random_.below(6) == 0;
        clip_.description = random_.below(
            static_cast<unsigned>(sizes.size() * people.size() * places.size() * moves.size()));
    }

    Random random_;
    const Log& log_;
    std::uint64_t shot_ = 0;
    Clip clip_;
};

struct Request {
    std::uint64_t rows = 300;
    std::uint64_t seed = 1;
    const Log* log = &plain;
    bool csv = false;
    const char* path = nullptr;
};

class Output {
public:
    explicit Output(std::FILE* file) : file_(file) { text.reserve(limit + limit / 8); }

    // Called once a row, so that the buffer is written in large pieces.
    void rowDone() {
        if (text.size() >= limit) {
            flush();
        }
    }

    bool finish() {
        flush();
        return std::fclose(file_) == 0 && good_;
    }

    Text text;

private:
    void flush() {
        good_ = std::fwrite(text.data(), 1, text.size(), file_) == text.size() && good_;
        text.clear();
    }

    static constexpr std::size_t limit = 1 << 20;
    std::FILE* file_;
    bool good_ = true;
};

// The widths line comes before the rows, so the log is shot once only to be measured.
std::vector<std::size_t> measure(const Request& request) {
    std::vector<std::size_t> widths;
    for (const Column& column : request.log->columns) {
        widths.push_back(column.minimumWidth);
    }
    Shoot shoot(request.seed, *request.log);
    Text value;
    for (std::uint64_t row = 0; row < request.rows; ++row) {
        const Clip& clip = shoot.next();
        for (std::size_t i = 0; i < widths.size(); ++i) {
            value.clear();
            request.log->columns[i].write(value, clip);
            widths[i] = std::max(widths[i], value.size());
        }
    }
    return widths;
}

// One line with an entry a column; `entry` appends the entry of column i.
template <class Entry>
void line(Text& out, std::size_t columns, bool quoted, Entry entry) {
    for (std::size_t i = 0; i < columns; ++i) {
        out += i > 0 ? "," : "";
        out += quoted ? "\"" : "";
        entry(i);
        out += quoted ? "\"" : "";
    }
    out += '\n';
}

void writeTableHeader(Text& out, const Request& request) {
    for (std::string_view parameter : request.log->parameters) {
        line(out, 1, true, [&](std::size_t) { out += parameter; });
    }
    auto columns = request.log->columns;
    auto widths = measure(request);
    line(out, 1, true, [&](std::size_t) { out += "VEKDB"; });
    line(out, columns.size(), true, [&](std::size_t i) { number(out, widths[i]); });
    line(out, columns.size(), true, [&](std::size_t i) { out += columns[i].type; });
}

bool write(const Request& request, std::FILE* file) {
    Output output(file);
    Text& out = output.text;
    bool quoted = !request.csv;
    auto columns = request.log->columns;
    if (quoted) {
        writeTableHeader(out, request);
    }
    line(out, columns.size(), quoted, [&](std::size_t i) { out += columns[i].name; });
    Shoot shoot(request.seed, *request.log);
    for (std::uint64_t row = 0; row < request.rows; ++row) {
        const Clip& clip = shoot.next();
        line(out, columns.size(), quoted, [&](std::size_t i) { columns[i].write(out, clip); });
        output.rowDone();
    }
    return output.finish();
}

bool parseNumber(const char* text, std::uint64_t& value) {
    char* end = nullptr;
    value = text ? std::strtoull(text, &end, 10) : 0;
    return end && end != text && *end == '\0';
}

bool parse(char** arguments, Request& request) {
    for (++arguments; *arguments; ++arguments) {
        std::string_view option = *arguments;
        if (option == "--rows" || option == "--seed") {
            if (!parseNumber(*++arguments, option == "--rows" ? request.rows : request.seed)) {
                return false;
            }
        } else if (option == "--csv") {
            request.csv = true;
        } else if (option == "--dailies") {
            request.log = &ofDailies;
        } else if (request.path || option.starts_with("--")) {
            return false;
        } else {
            request.path = *arguments;
        }
    }
    return true;
}

}  // namespace

int main(int, char** arguments) {
    Request request;
    if (!parse(arguments, request)) {
        std::fputs("usage: genlog [--rows N] [--seed N] [--dailies] [--csv] [FILE]\n", stderr);
        return 2;
    }
    std::FILE* file = request.path ? std::fopen(request.path, "wb") : stdout;
    if (!file || !write(request, file)) {
        std::fprintf(stderr, "genlog: cannot write %s\n", request.path ? request.path : "output");
        return 4;
    }
    return 0;
}
