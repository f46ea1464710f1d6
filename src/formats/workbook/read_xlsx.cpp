#include <algorithm>

#include "formats/input/limits.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"
#include "formats/text/text_lines.h"
#include "formats/workbook/sheet_reader.h"

namespace vek::formats {

namespace {

[[noreturn]] void refuse(const Log& log, const std::string& found, const std::string& advice) {
    throw Failure{unreadable, log.name, {0, "", found, "an Excel workbook (.xlsx)", advice}};
}

constexpr const char* saveAnew = "save it as .xlsx or as CSV in the program that made it";

constexpr const char* timelineInBundle = "content.otio";
constexpr const char* unpackIt = "unpack it, and read the content.otio in it";
constexpr const char* asTimeline = "export it as FCPXML, OpenTimelineIO, ALE or EDL";

bool endsWith(std::string_view path, std::string_view ending) {
    return path.size() >= ending.size() &&
           sameText(path.substr(path.size() - ending.size()), ending);
}

void requireArchive(std::string_view bytes, const Log& log) {
    if (bytes.starts_with("PK")) return;
    if (!bytes.starts_with("\xD0\xCF\x11\xE0")) refuse(log, "no workbook", "");
    if (endsWith(log.path, ".aaf")) refuse(log, "a timeline in AAF", asTimeline);
    refuse(log, "an old workbook (.xls), or one with a password",
           "save it as .xlsx without a password, or as CSV");
}

std::string otherKind(const ZipArchive& archive) {
    if (archive.has("content.xml")) return "an OpenDocument file (.ods)";
    if (archive.has("xl/workbook.bin")) return "a binary workbook (.xlsb)";
    if (archive.has("Index/Document.iwa") || archive.has("Index.zip")) {
        return "a sheet of another program (.numbers)";
    }
    if (archive.has("word/document.xml")) return "a text document (.docx)";
    if (archive.has(timelineInBundle)) return "a bundle of a timeline (.otioz)";
    return "an archive that is no workbook";
}

// What a workbook says of its sheets, and the cells of the one that is read.
class Workbook {
public:
    Workbook(std::string_view bytes, Log& log)
        : archive_(bytes, log.name, log.opening), log_(log) {}

    void open() {
        Relations root("");
        const std::string start = "_rels/.rels";
        if (archive_.has(start)) readPart(archive_, start, log_.name, root);
        const Relations::Target* book = root.byKind("officeDocument");
        if (book == nullptr || !book->entry.ends_with(".xml") || !archive_.has(book->entry) ||
            archive_.has("word/document.xml")) {
            refuse(log_, otherKind(archive_), archive_.has(timelineInBundle) ? unpackIt : saveAnew);
        }
        readPart(archive_, book->entry, log_.name, sheets_);
        readRelations(book->entry);
        readShared("styles", styles_);
        readShared("sharedStrings", texts_);
        leaveOutCharts();
    }

    void read() {
        const WorkbookSheets::Sheet& sheet = chosen();
        read_ = &sheet;
        log_.sheet = sheet.name;
        const Relations::Target* part = relations_.byId(sheet.relation);
        if (part == nullptr) refuse(log_, "no part for the sheet " + inQuotes(sheet.name), "");
        SheetReader reader({texts_, styles_, sheets_.from1904}, log_);
        XmlStream stream(reader, concat(log_.name, ": ", part->entry));
        archive_.read(part->entry, [&](std::string_view piece) {
            stream.take(piece);
            requireText(reader.textSize());
        });
        stream.finish();
        reader.finish();
        cells_ = std::move(reader.cells);
        texts_ = {};
    }

    std::vector<std::string> sheetNames() const {
        std::vector<std::string> names;
        for (const WorkbookSheets::Sheet& sheet : sheets_.sheets) names.push_back(sheet.name);
        return names;
    }

    SheetCells& cells() { return cells_; }
    std::string otherSheets() const { return listed(read_); }
    std::size_t unpacked() const { return archive_.unpacked(); }

private:
    // A shared text takes many times the bytes of the cell that refers to it: what is made of the
    // archive counts as what is unpacked of it.
    void requireText(std::size_t size) const {
        const std::size_t most = archive_.most();
        if (size + archive_.unpacked() <= most) return;
        throw Failure{unreadable,
                      log_.name,
                      {0, "", "more than " + std::to_string(most) + " bytes of text in its cells",
                       "no more", concat(log_.opening.terms->maxBytes, " allows more")}};
    }

    void readRelations(const std::string& book) {
        const std::size_t slash = book.rfind('/') + 1;
        relations_ = Relations(book.substr(0, slash));
        const std::string entry =
            concat(book.substr(0, slash), "_rels/", book.substr(slash), ".rels");
        if (archive_.has(entry)) readPart(archive_, entry, log_.name, relations_);
    }

    void readShared(std::string_view kind, XmlReceiver& receiver) {
        const Relations::Target* part = relations_.byKind(kind);
        if (part != nullptr) readPart(archive_, part->entry, log_.name, receiver);
    }

    void leaveOutCharts() {
        std::erase_if(sheets_.sheets, [&](const WorkbookSheets::Sheet& sheet) {
            const Relations::Target* part = relations_.byId(sheet.relation);
            return part != nullptr && part->kind != "worksheet";
        });
        if (sheets_.sheets.empty()) refuse(log_, "no sheet of cells", "");
    }

    const WorkbookSheets::Sheet& chosen() const {
        const std::string& wish = log_.opening.wishes.sheet;
        if (wish.empty()) return usualSheet();
        const std::vector<WorkbookSheets::Sheet>& all = sheets_.sheets;
        for (const WorkbookSheets::Sheet& sheet : all) {
            if (sheet.name == wish) return sheet;
        }
        for (const WorkbookSheets::Sheet& sheet : all) {
            if (sameText(sheet.name, wish)) return sheet;
        }
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (std::to_string(i + 1) == wish) return all[i];
        }
        throw Failure{wrongUsage,
                      log_.name,
                      {0, "", "there is no sheet " + inQuotes(wish), "one of " + listed(nullptr),
                       "a name or its number, from 1 on"}};
    }

    // The first that is not hidden; told where there are others.
    const WorkbookSheets::Sheet& usualSheet() const {
        const auto isSeen = [](const WorkbookSheets::Sheet& sheet) { return !sheet.isHidden; };
        const auto& all = sheets_.sheets;
        auto first = std::find_if(all.begin(), all.end(), isSeen);
        if (first == all.end()) first = all.begin();
        if (all.size() > 1) {
            log_.report([&]() -> Problem {
                return {0,
                        "",
                        counted(all.size(), "sheet"),
                        "one",
                        concat(inQuotes(first->name), " is read; ", log_.opening.terms->sheet,
                               " reads ", listed(&*first)),
                        false};
            });
        }
        return *first;
    }

    // All sheets but one.
    std::string listed(const WorkbookSheets::Sheet* besides) const {
        constexpr std::size_t most = 20;
        std::string list;
        std::size_t count = 0;
        for (const WorkbookSheets::Sheet& sheet : sheets_.sheets) {
            if (&sheet == besides) continue;
            if (++count > most) return list + ", ...";
            if (!list.empty()) list += ", ";
            list += inQuotes(sheet.name) + (sheet.isHidden ? " (hidden)" : "");
        }
        return list;
    }

    ZipArchive archive_;
    Log& log_;
    WorkbookSheets sheets_;
    const WorkbookSheets::Sheet* read_ = nullptr;
    Relations relations_{""};
    CellStyles styles_;
    SharedTexts texts_;
    SheetCells cells_;
};

// Makes the table of the cells. Columns in which nothing stands, the heading included, are none.
class SheetTable {
public:
    SheetTable(SheetCells& cells, std::size_t bytes, const std::string& otherSheets, Log& log)
        : places_(cells.places()),
          rows_(cells.rows()),
          mostEmpty_(emptyOfAnySheet + bytes),
          otherSheets_(otherSheets),
          log_(log),
          builder_(log, cells.take()),
          walk_(builder_.text()) {}

    void make() {
        std::size_t row = 0;
        while (row < rows_.size() && rows_[row].number <= log_.opening.wishes.skippedLines) {
            takeRow(rows_[row++]);
        }
        if (row > 0 && row == rows_.size()) refuseSkipped();
        if (row == rows_.size()) refuseEmpty();
        readHeading(row);
        for (; row < rows_.size(); ++row) addRow(rows_[row]);
        builder_.finish();
    }

private:
    // Cells without text between others take memory that no byte of the sheet gives reason for.
    static constexpr std::size_t emptyOfAnySheet = std::size_t{1} << 21;

    [[noreturn]] void refuseEmpty() const {
        throw Failure{
            unreadable,
            log_.name,
            {0, "", "nothing in the sheet " + inQuotes(log_.sheet), "a row of column names",
             otherSheets_.empty() ? "fill it, or name another file"
                                  : concat(log_.opening.terms->sheet, " reads ", otherSheets_)}};
    }

    [[noreturn]] void refuseSkipped() const {
        throw Failure{
            unreadable,
            log_.name,
            {0, "",
             concat("nothing in the sheet ", inQuotes(log_.sheet), " behind ",
                    counted(log_.opening.wishes.skippedLines, "row"), " that are passed over"),
             "a row of column names", "pass over fewer"}};
    }

    // Its cells at their places, as many as the last one needs.
    void takeRow(const SheetCells::Row& row) {
        texts_.clear();
        for (std::uint32_t i = 0; i < row.count; ++i) {
            const CellWalk::Cell cell = walk_.next();
            const std::size_t place = places_[cell.column];
            if (texts_.size() <= place) texts_.resize(place + 1);
            texts_[place] = cell.text;
        }
        empty_ += texts_.size() - std::min<std::size_t>(row.count, texts_.size());
        if (empty_ <= mostEmpty_ || log_.opening.limits.cells != 0) return;
        throw Failure{
            unreadable,
            log_.name,
            {row.number, "", "more than " + std::to_string(mostEmpty_) + " empty cells",
             "no more in front of others", concat(log_.opening.terms->maxCells, " allows more")}};
    }

    void readHeading(std::size_t& row) {
        log_.form.hasNoHeading = log_.opening.wishes.hasNoHeading;
        if (!log_.form.hasNoHeading) {
            takeRow(rows_[row++]);
            return builder_.setColumns(asStrings(texts_));
        }
        std::vector<std::string> names;
        for (std::size_t i = 0; i < columnCount(); ++i) names.push_back(numberedColumnName(i));
        builder_.setColumns(std::move(names));
    }

    std::size_t columnCount() const { return places_.empty() ? 0 : places_.back() + 1; }

    void addRow(const SheetCells::Row& row) {
        char* const begin = walk_.place();
        takeRow(row);
        if (texts_.size() > builder_.declaredCount()) {
            reportLength(log_, row.number, texts_.size(), builder_.declaredCount());
        }
        builder_.addWholeRow(row.number, texts_.data(), texts_.size(), {begin, walk_.place()});
    }

    std::vector<unsigned> places_;
    std::vector<SheetCells::Row> rows_;
    std::size_t mostEmpty_;
    const std::string& otherSheets_;
    Log& log_;
    TableBuilder builder_;
    CellWalk walk_;
    std::vector<std::string_view> texts_;
    std::size_t empty_ = 0;
};

}  // namespace

void readXlsx(Input& input, Log& log) {
    SheetCells cells;
    std::size_t bytes = 0;
    std::string others;
    {
        const std::string_view packed = input.text();
        requireArchive(packed, log);
        Workbook workbook(packed, log);
        workbook.open();
        workbook.read();
        cells = std::move(workbook.cells());
        bytes = workbook.unpacked();
        others = workbook.otherSheets();
    }
    input.takeText();
    SheetTable(cells, bytes, others, log).make();
}

std::vector<std::string> sheetsOfXlsx(Input& input, const Opening& opening) {
    Log log;
    log.name = input.name();
    log.opening = opening;
    const std::string_view packed = input.text();
    requireArchive(packed, log);
    Workbook workbook(packed, log);
    workbook.open();
    return workbook.sheetNames();
}

}  // namespace vek::formats
