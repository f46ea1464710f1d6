// Whoever changes one row of a file finds all others as they were, byte for byte. Files are made
// of pieces here, so that this test knows what belongs to which row without reading them.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>
#include <random>

#include "cli/program.h"

namespace {

using Cells = std::vector<std::string>;

// A row as it stands in a file, or what stands between rows: then there are no cells.
struct Piece {
    std::string text;
    Cells cells;

    bool isRow() const { return !cells.empty(); }
};

struct File {
    std::string name;
    std::vector<std::string> options;
    std::string heading;
    Cells names;
    std::vector<Piece> pieces;
    std::string closing;

    std::string text() const { return heading + upTo(pieces.size()) + closing; }
    std::string upTo(std::size_t end) const {
        std::string out;
        for (std::size_t i = 0; i < end; ++i) out += pieces[i].text;
        return out;
    }
    std::string before(std::size_t piece) const { return heading + upTo(piece); }
    std::string behind(std::size_t piece) const {
        return text().substr(before(piece).size() + pieces[piece].text.size());
    }
    std::vector<std::size_t> rows() const {
        std::vector<std::size_t> out;
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            if (pieces[i].isRow()) out.push_back(i);
        }
        return out;
    }
};

// Makes files as programs and people write them.
class Maker {
public:
    explicit Maker(unsigned seed) : random_(seed) {}

    bool chance(unsigned percent) { return number(100) < percent; }
    std::size_t number(std::size_t below) {
        return std::uniform_int_distribution<std::size_t>(0, below - 1)(random_);
    }
    template <class T>
    const T& one(const std::vector<T>& all) {
        return all[number(all.size())];
    }

    File csv(char separator) {
        File file{separator == ',' ? "log.csv" : "log.tsv",
                  {},
                  chance(30) ? "\xEF\xBB\xBF" : "",
                  {"Id", "Take", "Notes"},
                  {},
                  ""};
        const std::vector<std::string> values = {
            "",        "x",        "two words", "1.10", "caf\xc3\xa9", "a,b\tc",
            "a \"b\"", "up\ndown", " 7 ",       "0012", "up\r\nto",    "'"};
        fillLines(file, values, [&](const Cells& cells, bool isHeading) {
            std::string line;
            for (std::size_t i = 0; i < cells.size(); ++i) {
                if (i > 0) line += separator;
                line += delimited(cells[i], separator, isHeading);
            }
            return line;
        });
        return file;
    }

    File ale() {
        File file{"log.ale", {}, "", {"Id", "Take", "Notes"}, {}, ""};
        const std::vector<std::string> values = {"", "x", "a \"b\"", "\"q\"", "1,2", "caf\xc3\xa9"};
        const std::string end = chance(50) ? "\r\n" : "\n";
        file.heading = "Heading" + end + (chance(50) ? "FIELD_DELIM\tTABS" + end : "") +
                       "VIDEO_FORMAT\t1080" + end + (chance(50) ? end : "") + "Column" + end;
        const bool hasClosingTabs = chance(30);
        fillLines(
            file, values,
            [&](const Cells& cells, bool isHeading) {
                std::string line;
                for (const std::string& cell : cells) line += cell + "\t";
                if (!hasClosingTabs || isHeading) line.pop_back();
                return line;
            },
            end + "Data" + end);
        return file;
    }

    File plainCsv() {
        File file{"log.csv", {"--from", "plain-csv"}, "", {"Id", "Take", "Notes"}, {}, ""};
        fillLines(file, {"", "x", "\"q\"", "two words", "a\tb"}, joined(','), "", true);
        return file;
    }

    File table() {
        File file{"log.vek",
                  {},
                  "\"VEKDB:Rev 1\"\n\"FPS:24\"\r\n\"Note:  x\"\n\"VEKDB\"\n\"4\",\"4\",\"4\"\n"
                  "\"text\",\"text\",\"text\"\n\"Id\",\"Take\",\"Notes\"\n",
                  {"Id", "Take", "Notes"},
                  {},
                  ""};
        const std::vector<std::string> values = {"", "x", "two words", "caf\xc3\xa9", "0012"};
        for (std::size_t i = 0, count = number(7); i < count; ++i) {
            Piece piece{"", {"r" + std::to_string(i), one(values), one(values)}};
            for (const std::string& cell : piece.cells) {
                const bool isBare = !cell.empty() && chance(30);
                piece.text +=
                    (piece.text.empty() ? "" : ",") + (isBare ? cell : "\"" + cell + "\"");
            }
            piece.text += chance(30) ? "\r\n" : "\n";
            file.pieces.push_back(piece);
        }
        if (!file.pieces.empty() && chance(30)) cutEnd(file.pieces.back().text);
        return file;
    }

    File json(bool asLines) {
        File file{asLines ? "log.jsonl" : "log.json",
                  {},
                  asLines ? "" : one<std::string>({"[", "[\n  "}),
                  {"Id", "Take", "Notes"},
                  {},
                  ""};
        const std::string comma = one<std::string>({",", ", ", " ,\n    "});
        const std::string colon = one<std::string>({":", ": ", " : "});
        const std::size_t count = number(7);
        for (std::size_t i = 0; i < count; ++i) {
            if (i > 0)
                file.pieces.push_back({asLines ? one<std::string>({"\n", "\r\n", "\n\n"})
                                               : one<std::string>({",\n", ", ", "\n,"}),
                                       {}});
            file.pieces.push_back(object(i, comma, colon));
        }
        file.closing = asLines ? (chance(50) ? "\n" : "") : "\n]\n";
        return file;
    }

private:
    struct Value {
        std::string text;
        std::string cell;
    };

    Piece object(std::size_t i, const std::string& comma, const std::string& colon) {
        const std::vector<Value> values = {{"1.10", "1.10"},    {"-0", "-0"},
                                           {"true", "true"},    {"null", ""},
                                           {"\"x\"", "x"},      {"\"\\u00e9\\n\"", "\xc3\xa9\n"},
                                           {"[1, 2]", "[1,2]"}, {"\"a\\/b\"", "a/b"},
                                           {"1E5", "1E5"},      {"\"\"", ""}};
        const std::string id = "r" + std::to_string(i);
        Piece piece{"{" + one<std::string>({"", " "}) + "\"Id\"" + colon + "\"" + id + "\"",
                    {id, "", ""}};
        for (const char* name : {"Take", "Notes"}) {
            if (i > 0 && chance(20)) continue;
            const Value& value = one(values);
            piece.text += comma + "\"" + name + "\"" + colon + value.text;
            piece.cells[name[0] == 'T' ? 1 : 2] = value.cell;
        }
        piece.text += "}";
        return piece;
    }

    static std::function<std::string(const Cells&, bool)> joined(char separator) {
        return [separator](const Cells& cells, bool) {
            std::string line;
            for (const std::string& cell : cells) line += cell + separator;
            line.pop_back();
            return line;
        };
    }

    std::string delimited(const std::string& cell, char separator, bool isHeading) {
        const bool needsQuotes = cell.find_first_of(std::string("\"\r\n") + separator) != cell.npos;
        if (!needsQuotes && (isHeading || !chance(30))) return cell;
        std::string out = "\"";
        for (char c : cell) out += c == '"' ? "\"\"" : std::string(1, c);
        return out + "\"";
    }

    // Lines of a file that was put together from several have different ends, but no line feed
    // that would stand behind another line's carriage return.
    std::string end(bool ofLibrary) {
        if (ofLibrary) return chance(40) ? "\r\n" : "\n";
        return one<std::string>(isOld_ ? Cells{"\r", "\r\n"} : Cells{"\n", "\r\n"});
    }

    static void cutEnd(std::string& text) {
        while (text.ends_with('\n') || text.ends_with('\r')) text.pop_back();
    }

    template <class Line>
    void fillLines(File& file, const std::vector<std::string>& values, Line line,
                   const std::string& behindNames = "", bool ofLibrary = false) {
        isOld_ = chance(25);
        const std::size_t count = number(7);
        file.heading += line(file.names, true) + end(ofLibrary) + behindNames;
        for (std::size_t i = 0; i < count; ++i) {
            if (!ofLibrary && chance(15)) file.pieces.push_back({end(ofLibrary), {}});
            Piece piece{"", {"r" + std::to_string(i), one(values), one(values)}};
            Cells written = piece.cells;
            if (chance(20) && written.back().empty()) written.pop_back();
            if (chance(10) && !ofLibrary) written.insert(written.end(), 2, "");
            piece.text = line(written, false) + end(ofLibrary);
            file.pieces.push_back(piece);
        }
        const bool mayCut = !file.pieces.empty() && file.pieces.back().isRow();
        if (mayCut && chance(30)) file.pieces.back().text.erase(lastEnd(file.pieces.back().text));
    }

    static std::size_t lastEnd(const std::string& text) {
        return text.size() - (text.ends_with("\r\n") ? 2 : 1);
    }

    std::mt19937 random_;
    bool isOld_ = false;
};

// What a reader finds, an empty text for a value that is not there. Numbers of JSON become texts by
// way of CSV.
std::vector<Cells> readBack(const WorkFolder& folder, const File& file, const Cells& names) {
    const bool isJson = file.name.starts_with("log.json");
    if (isJson) runVek(folder, {"convert", file.name, "texts.csv"});
    std::vector<std::string> words = {"show", isJson ? "texts.csv" : file.name, "--format",
                                      "jsonl"};
    words.insert(words.end(), file.options.begin(), file.options.end());
    std::vector<Cells> rows;
    std::istringstream lines(runVek(folder, words).output);
    for (std::string line; std::getline(lines, line);) {
        const nlohmann::json row = nlohmann::json::parse(line);
        Cells cells;
        for (const std::string& name : names) cells.push_back(row.value(name, ""));
        rows.push_back(cells);
    }
    return rows;
}

std::vector<Cells> cellsOf(const File& file) {
    std::vector<Cells> out;
    for (std::size_t row : file.rows()) out.push_back(file.pieces[row].cells);
    return out;
}

ino_t inodeOf(const WorkFolder& folder, const std::string& name) {
    struct stat status = {};
    EXPECT_EQ(::stat((folder.path() / name).c_str(), &status), 0);
    return status.st_ino;
}

class Trial {
public:
    Trial(File file, Maker& maker) : file_(std::move(file)), maker_(maker) {
        folder_.write(file_.name, file_.text());
    }

    void run() {
        SCOPED_TRACE(testing::PrintToString(file_.text()));
        ASSERT_EQ(readBack(folder_, file_, file_.names), cellsOf(file_));
        if (file_.rows().empty()) return;
        switch (maker_.number(4)) {
            case 0:
                return setCell();
            case 1:
                return setWhatIsThere();
            case 2:
                return deleteRow();
            default:
                return renameColumn();
        }
    }

private:
    std::size_t anyRow() { return maker_.one(file_.rows()); }

    Finish change(std::vector<std::string> words) {
        words.insert(words.end(), file_.options.begin(), file_.options.end());
        Finish finish = runVek(folder_, words);
        EXPECT_EQ(finish.exitCode, 0) << finish.errors;
        return finish;
    }

    void setCell() {
        const std::size_t at = anyRow();
        Piece& row = file_.pieces[at];
        const std::size_t column = 1 + maker_.number(2);
        const std::string value = maker_.one<std::string>({"new", "", "5", "\"n\"", "n w"});
        const std::string before = file_.before(at);
        const std::string behind = file_.behind(at);
        SCOPED_TRACE("set " + file_.names[column] + "=" + value + " of " + row.cells[0]);
        change({"set", file_.name, file_.names[column] + "=" + value, "-w", "Id==" + row.cells[0]});
        row.cells[column] = value;
        const std::string after = folder_.read(file_.name);
        EXPECT_EQ(after.substr(0, before.size()), before);
        ASSERT_GE(after.size(), before.size() + behind.size());
        EXPECT_EQ(after.substr(after.size() - behind.size()), behind);
        EXPECT_EQ(readBack(folder_, file_, file_.names), cellsOf(file_));
    }

    void setWhatIsThere() {
        const Piece& row = file_.pieces[anyRow()];
        const ino_t inode = inodeOf(folder_, file_.name);
        change({"set", file_.name, "Take=" + row.cells[1], "-w", "Id==" + row.cells[0]});
        EXPECT_EQ(folder_.read(file_.name), file_.text());
        EXPECT_EQ(inodeOf(folder_, file_.name), inode);
    }

    void deleteRow() {
        const std::size_t at = anyRow();
        const std::string before = file_.before(at);
        const std::string behind = file_.behind(at);
        SCOPED_TRACE("delete " + file_.pieces[at].cells[0]);
        change({"delete", file_.name, "-w", "Id==" + file_.pieces[at].cells[0]});
        file_.pieces[at].cells.clear();
        if (!file_.name.starts_with("log.json")) {
            EXPECT_EQ(folder_.read(file_.name), before + behind);
        }
        if (!file_.rows().empty()) {
            EXPECT_EQ(readBack(folder_, file_, file_.names), cellsOf(file_));
        }
    }

    void renameColumn() {
        SCOPED_TRACE("rename");
        change({"column", "rename", file_.name, "Take", "Renamed"});
        const std::string after = folder_.read(file_.name);
        const std::string rows = file_.upTo(file_.pieces.size());
        if (!file_.name.starts_with("log.json")) {
            EXPECT_EQ(after.substr(after.size() - std::min(after.size(), rows.size())), rows);
        }
        EXPECT_EQ(readBack(folder_, file_, {"Id", "Renamed", "Notes"}), cellsOf(file_));
    }

    File file_;
    Maker& maker_;
    WorkFolder folder_;
};

template <class Make>
void tryMany(Make make) {
    for (unsigned seed = 1; seed <= 60 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Maker maker(seed);
        Trial(make(maker), maker).run();
    }
}

}  // namespace

TEST(EditsInPlace, LeaveOtherRowsOfCsvAsTheyCame) {
    tryMany([](Maker& maker) { return maker.csv(','); });
}

TEST(EditsInPlace, LeaveOtherRowsOfTsvAsTheyCame) {
    tryMany([](Maker& maker) { return maker.csv('\t'); });
}

TEST(EditsInPlace, LeaveOtherRowsOfAleAsTheyCame) {
    tryMany([](Maker& maker) { return maker.ale(); });
}

TEST(EditsInPlace, LeaveOtherRowsOfPlainCsvAsTheyCame) {
    tryMany([](Maker& maker) { return maker.plainCsv(); });
}

TEST(EditsInPlace, LeaveOtherRowsOfTableFilesAsTheyCame) {
    tryMany([](Maker& maker) { return maker.table(); });
}

TEST(EditsInPlace, LeaveOtherRowsOfJsonAsTheyCame) {
    tryMany([](Maker& maker) { return maker.json(false); });
}

TEST(EditsInPlace, LeaveOtherRowsOfJsonLinesAsTheyCame) {
    tryMany([](Maker& maker) { return maker.json(true); });
}
