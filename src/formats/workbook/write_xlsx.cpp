#include <algorithm>

#include "formats/input/progress.h"
#include "formats/text/width.h"
#include "formats/workbook/sheet_cells.h"
#include "formats/workbook/sheet_xml.h"
#include "formats/workbook/zip_archive.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/sheet_row.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

namespace {

constexpr std::size_t longestCell = 32767;
constexpr std::size_t narrowest = 8;
constexpr std::size_t widest = 60;
constexpr std::size_t pieceSize = std::size_t{1} << 18;

#define VEK_XML_HEAD "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
#define VEK_SHEETS "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
#define VEK_RELATIONS "http://schemas.openxmlformats.org/officeDocument/2006/relationships"

struct FixedPart {
    const char* entry;
    std::string_view text;
};

constexpr FixedPart fixedParts[] = {
    {"[Content_Types].xml",
     VEK_XML_HEAD "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
                  "<Default Extension=\"rels\" "
                  "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
                  "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
                  "<Override PartName=\"/xl/workbook.xml\" ContentType=\"application/"
                  "vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>"
                  "<Override PartName=\"/xl/worksheets/sheet1.xml\" ContentType=\"application/"
                  "vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/>"
                  "<Override PartName=\"/xl/styles.xml\" ContentType=\"application/"
                  "vnd.openxmlformats-officedocument.spreadsheetml.styles+xml\"/></Types>"},
    {"_rels/.rels", VEK_XML_HEAD
     "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
     "<Relationship Id=\"rId1\" Type=\"" VEK_RELATIONS "/officeDocument\" "
     "Target=\"xl/workbook.xml\"/></Relationships>"},
    {"xl/_rels/workbook.xml.rels", VEK_XML_HEAD
     "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
     "<Relationship Id=\"rId1\" Type=\"" VEK_RELATIONS "/worksheet\" "
     "Target=\"worksheets/sheet1.xml\"/>"
     "<Relationship Id=\"rId2\" Type=\"" VEK_RELATIONS "/styles\" Target=\"styles.xml\"/>"
     "</Relationships>"},
    {"xl/workbook.xml",
     VEK_XML_HEAD "<workbook xmlns=\"" VEK_SHEETS "\" xmlns:r=\"" VEK_RELATIONS "\"><sheets>"
                  "<sheet name=\"Log\" sheetId=\"1\" r:id=\"rId1\"/></sheets></workbook>"},
    // Cells of style 1 are texts, those of 2 in tagged rows, those of 3 in the heading.
    {"xl/styles.xml", VEK_XML_HEAD
     "<styleSheet xmlns=\"" VEK_SHEETS "\"><fonts count=\"2\">"
     "<font><sz val=\"11\"/><name val=\"Calibri\"/></font>"
     "<font><b/><sz val=\"11\"/><name val=\"Calibri\"/></font></fonts><fills count=\"3\">"
     "<fill><patternFill patternType=\"none\"/></fill>"
     "<fill><patternFill patternType=\"gray125\"/></fill>"
     "<fill><patternFill patternType=\"solid\"><fgColor rgb=\"FFFFF2CC\"/>"
     "<bgColor indexed=\"64\"/></patternFill></fill></fills><borders count=\"1\">"
     "<border><left/><right/><top/><bottom/><diagonal/></border></borders>"
     "<cellStyleXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/>"
     "</cellStyleXfs><cellXfs count=\"4\">"
     "<xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\"/>"
     "<xf numFmtId=\"49\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\" "
     "applyNumberFormat=\"1\"/>"
     "<xf numFmtId=\"49\" fontId=\"0\" fillId=\"2\" borderId=\"0\" xfId=\"0\" "
     "applyNumberFormat=\"1\" applyFill=\"1\"/>"
     "<xf numFmtId=\"49\" fontId=\"1\" fillId=\"0\" borderId=\"0\" xfId=\"0\" "
     "applyNumberFormat=\"1\" applyFont=\"1\"/></cellXfs>"
     "<cellStyles count=\"1\"><cellStyle name=\"Normal\" xfId=\"0\" builtinId=\"0\"/>"
     "</cellStyles></styleSheet>"},
};

constexpr std::string_view sheetBegin = VEK_XML_HEAD "<worksheet xmlns=\"" VEK_SHEETS "\">";

#undef VEK_RELATIONS
#undef VEK_SHEETS
#undef VEK_XML_HEAD

constexpr char textStyle = '1';
constexpr char taggedStyle = '2';
constexpr char headStyle = '3';

// As wide as its longest line, so far as that matters.
std::size_t widthOf(std::string_view text) {
    std::size_t width = 0;
    for (text = text.substr(0, 16 * widest); !text.empty();) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        width = std::max(width, displayWidth(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return std::min(width, widest);
}

// Programs leave out blanks at the ends where they are not told to keep them.
bool hasBlankEnd(std::string_view text) {
    const auto isBlank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
    return !text.empty() && (isBlank(text.front()) || isBlank(text.back()));
}

// A sheet of a workbook: every cell a text, the heading fixed.
class SheetWriter {
public:
    SheetWriter(const Sheet& sheet, Output& out, Losses& losses)
        : sheet_(sheet),
          cells_(sheet),
          losses_(losses),
          output_(out.name()),
          tagColumn_(sheet.log.findColumn("Tag")) {
        for (unsigned i = 0; i < columnCount(); ++i) {
            letters_.push_back(lettersOfColumn(i));
            names_.push_back(sheet.name(i));
        }
    }

    /// A Failure for what a sheet cannot hold, before anything is written.
    void measure() {
        requireNoMore(std::size_t{sheet_.rowCount()} + 1, mostSheetRows, "rows and the heading");
        requireNoMore(columnCount(), mostSheetColumns, "columns");
        widths_.assign(columnCount(), narrowest);
        for (unsigned i = 0; i < columnCount(); ++i) {
            measureCell(i, names_[i], [&] { return inQuotes(names_[i]); });
        }
        for (unsigned row = 0; row < sheet_.rowCount(); ++row) {
            const std::string_view* const cells = cells_.cells(row);
            for (unsigned i = 0; i < columnCount(); ++i) {
                measureCell(i, cells[i], [&] { return place(sheet_, row, i); });
            }
        }
        if (tooLong_ == 0) return;
        refuse(concat(firstTooLong_, ": more than 32767 characters",
                      tooLong_ > 1 ? concat(", as in ", counted(tooLong_ - 1, "other cell")) : ""),
               "no more in a cell of a workbook; shorten it, or write CSV");
    }

    void write(ZipWriter& zip) {
        text_ = sheetBegin;
        addFrame();
        addHeading();
        Progress progress(sheet_.log.opening.watcher, "writing", sheet_.rowCount());
        for (unsigned row = 0; row < sheet_.rowCount(); ++row) {
            progress.reach(row);
            addRow(row);
            if (text_.size() < pieceSize) continue;
            zip.write(text_);
            text_.clear();
        }
        text_ += "</sheetData>";
        addLeaveTextsAlone();
        zip.write(text_ += "</worksheet>");
    }

private:
    unsigned columnCount() const { return static_cast<unsigned>(sheet_.columns.size()); }

    [[noreturn]] void refuse(const std::string& found, const std::string& expected) const {
        throw Failure{unwritable, concat(output_, ": ", found, ", expected ", expected)};
    }

    void requireNoMore(std::size_t count, std::size_t most, const char* what) const {
        if (count <= most) return;
        refuse(concat(std::to_string(count), " ", what),
               concat("at most ", std::to_string(most),
                      " in a sheet; write the log in several files, or as CSV"));
    }

    template <class Place>
    void measureCell(unsigned column, std::string_view text, Place where) {
        if (text.size() > longestCell && sheetLength(text) > longestCell && tooLong_++ == 0) {
            firstTooLong_ = where();
        }
        if (text.size() > widths_[column] && widths_[column] < widest) {
            widths_[column] = std::max(widths_[column], widthOf(text));
        }
    }

    std::string lastPlace() const {
        return letters_.back() + std::to_string(std::size_t{sheet_.rowCount()} + 1);
    }

    void addFrame() {
        if (columnCount() > 0) text_ += concat("<dimension ref=\"A1:", lastPlace(), "\"/>");
        text_ +=
            "<sheetViews><sheetView tabSelected=\"1\" workbookViewId=\"0\">"
            "<pane ySplit=\"1\" topLeftCell=\"A2\" activePane=\"bottomLeft\" state=\"frozen\"/>"
            "<selection pane=\"bottomLeft\"/></sheetView></sheetViews>";
        if (columnCount() > 0) text_ += "<cols>";
        for (unsigned i = 0; i < columnCount(); ++i) {
            const std::string number = std::to_string(i + 1);
            text_ += concat("<col min=\"", number, "\" max=\"", number, "\" width=\"",
                            std::to_string(widths_[i] + 2), "\" style=\"1\" customWidth=\"1\"/>");
        }
        text_ += columnCount() > 0 ? "</cols><sheetData>" : "<sheetData>";
    }

    void addHeading() {
        text_ += "<row r=\"1\">";
        for (unsigned i = 0; i < columnCount(); ++i) {
            beginCell(i, "1", headStyle);
            endCell(names_[i], [&] { return inQuotes(names_[i]); });
        }
        text_ += "</row>";
    }

    void addRow(unsigned row) {
        const std::string_view* const cells = cells_.cells(row);
        const std::string number = std::to_string(std::size_t{row} + 2);
        const bool isMarked = isTagged(row);
        const char style = isMarked ? taggedStyle : textStyle;
        text_ += concat("<row r=\"", number, "\">");
        // An empty text keeps a row of empty cells one for readers.
        const bool isEmpty = std::all_of(cells, cells + columnCount(),
                                         [](std::string_view cell) { return cell.empty(); });
        for (unsigned i = 0; i < columnCount(); ++i) {
            if (!cells[i].empty() || (i == 0 && isEmpty)) {
                beginCell(i, number, style);
                endCell(cells[i], [&] { return place(sheet_, row, i); });
            } else if (isMarked) {
                beginCell(i, number, style);
                text_ += "/>";
            }
        }
        text_ += "</row>";
    }

    bool isTagged(unsigned row) const {
        return tagColumn_ != noColumn && isTag(sheet_.record(row).fieldView(tagColumn_));
    }

    void beginCell(unsigned column, std::string_view row, char style) {
        text_ += "<c r=\"";
        text_ += letters_[column];
        text_ += row;
        text_ += "\" s=\"";
        text_ += style;
        text_ += '"';
    }

    template <class Place>
    void endCell(std::string_view text, Place where) {
        text_ += hasBlankEnd(text) ? " t=\"inlineStr\"><is><t xml:space=\"preserve\">"
                                   : " t=\"inlineStr\"><is><t>";
        const XmlLoss loss = addSheetText(text_, text);
        text_ += "</t></is></c>";
        if (!loss.isAny()) return;
        if (loss.hasZeros) losses_.add("cells whose zero bytes become U+FFFD", where());
        if (loss.hasBrokenBytes) {
            losses_.add("cells whose bytes that are no UTF-8 become U+FFFD", where());
        }
    }

    // Else programs would mark each text that looks like a number.
    void addLeaveTextsAlone() {
        if (columnCount() == 0) return;
        text_ += concat("<ignoredErrors><ignoredError sqref=\"A1:", lastPlace(),
                        "\" numberStoredAsText=\"1\"/></ignoredErrors>");
    }

    const Sheet& sheet_;
    SheetRow cells_;
    Losses& losses_;
    std::string output_;
    unsigned tagColumn_;
    std::vector<std::string> letters_;
    std::vector<std::string> names_;
    std::vector<std::size_t> widths_;
    std::size_t tooLong_ = 0;
    std::string firstTooLong_;
    std::string text_;
};

}  // namespace

void writeXlsx(const Sheet& sheet, Output& out, Losses& losses) {
    SheetWriter writer(sheet, out, losses);
    writer.measure();
    loseParameters(sheet.log, losses);
    ZipWriter zip(out.name());
    for (const FixedPart& part : fixedParts) {
        zip.begin(part.entry);
        zip.write(part.text);
    }
    zip.begin("xl/worksheets/sheet1.xml");
    writer.write(zip);
    out.write(zip.finish());
}

}  // namespace vek::formats
