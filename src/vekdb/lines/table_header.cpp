#include "vekdb/lines/table_header.h"

#include <algorithm>
#include <vector>

#include <vekdb/host/diagnostics.h>
#include <vekdb/host/text_file.h>
#include <vekdb/host/text_util.h>
#include "host/text_in_pieces.h"
#include "vekdb/lines/field_unescaping.h"
#include "vekdb/lines/record_lines.h"
#include "vekdb/lines/table_text.h"

namespace {

// So much of a line shows its first value in any file that somebody wrote.
constexpr std::size_t mostToTell = 4096;
constexpr std::string_view blockStart = "VEKDB:";

bool startsBlock(std::string_view value) {
    return NameEqual::same(value.substr(0, blockStart.size()), blockStart);
}

bool hasColon(std::string_view value) {
    return value.find(':') != value.npos;
}

std::string_view withoutLeadingSpace(std::string_view text) {
    while (!text.empty() && isAsciiSpace(text.front())) text.remove_prefix(1);
    return text;
}

int revisionOf(std::string_view value) {
    const auto digit = std::find_if(value.begin(), value.end(), isAsciiDigit);
    return parseInt(value.substr(static_cast<std::size_t>(digit - value.begin())));
}

// Nothing is said of a file that then turns out to be unreadable.
int readRevision(std::string_view value, const TextFile& file) {
    const int revision = revisionOf(value);
    if (revision != currentRevision) {
        TextInPieces::awaitAll(file);
        debug_printf("vekdb::read_text:  Warning: vekdb is revision %d, current level is %d\n",
                     revision, currentRevision);
    }
    return revision;
}

bool isLabelName(const LightweightString<char>& name) {
    LightweightString<char> lower = name;
    toLower(lower);
    return lower.view().find("start") != std::string_view::npos ||
           lower.view().find("end") != std::string_view::npos;
}

}  // namespace

bool TableHeader::hasLine() const {
    return file_.lineOffset(file_.currentLine) < file_.textSize();
}

// How many values the line has, also when the record has no room for all.
std::size_t TableHeader::readLine() {
    return FileLines(file_).read(line_).values;
}

bool TableHeader::mayBegin() const {
    const std::string_view text = TextInPieces::textSoFar(file_);
    const std::size_t end = text.find_first_of(std::string_view("\n\0", 2));
    const std::string_view line = text.substr(0, std::min(end, mostToTell));
    std::vector<char> values(line.size() + 1);
    FieldUnescaper scanner;
    scanner.scan(line, values.data());
    const std::string_view value = scanner.count() == 0 ? "" : scanner.value(0);
    const bool isCut = line.size() < file_.textSize() && line.size() != end;
    return startsBlock(value) || (isCut && value.size() < blockStart.size());
}

TableHeader::Block TableHeader::readParameters() {
    receiver_.beginParameters();
    readLine();
    if (!startsBlock(first())) return Block::missing;
    storeParameter();
    receiver_.setRevision(readRevision(first().substr(blockStart.size()), file_));
    return readFurtherParameters();
}

// What stands before the first colon and what stands behind it. A parameter without a name is
// passed over.
void TableHeader::storeParameter() {
    const std::string_view text = withoutLeadingSpace(first());
    const std::size_t colon = text.find(':');
    if (colon == 0) return;
    receiver_.addParameter(text.substr(0, colon), withoutLeadingSpace(text.substr(colon + 1)));
}

TableHeader::Block TableHeader::readFurtherParameters() {
    while (hasLine()) {
        readLine();
        if (isMagicName(first())) return Block::magic;
        if (!hasColon(first())) return endWithoutColon();
        storeParameter();
    }
    return Block::broken;
}

TableHeader::Block TableHeader::endWithoutColon() {
    return magicFollows() ? Block::broken : Block::names;
}

// Looks ahead; the line read last and the file's place stay.
bool TableHeader::magicFollows() {
    const unsigned place = file_.currentLine;
    dbrecord line(0);
    FileLines lines(file_);
    bool found = false;
    while (!found && hasLine()) {
        lines.read(line);
        found = isMagicName(line.fieldView(0));
    }
    file_.currentLine = place;
    return found;
}

bool TableHeader::readColumns(bool requireMagic) {
    bool read = false;
    switch (readParameters()) {
        case Block::magic:
            read = readColumnHeader();
            break;
        case Block::names:
            read = !requireMagic && takeNamesOnly();
            break;
        case Block::missing:
        case Block::broken:
            break;
    }
    if (!read) return false;
    receiver_.endTypes();
    nameColumns();
    return true;
}

bool TableHeader::readColumnHeader() {
    const std::size_t widths = readLine();
    columns_ = receiver_.announceColumns(widths);
    if (readLine() != widths) return refuse(3);
    receiver_.makeColumns();
    for (unsigned i = 0; i < columns_; ++i) {
        const char* type = line_.get_field(static_cast<unsigned short>(i));
        receiver_.setType(i, vekdb_string_to_fieldtype(type));
    }
    return readLine() == widths || refuse(4);
}

bool TableHeader::refuse(int line) {
    receiver_.refuse(line);
    return false;
}

// Without a header the names tell which columns hold timecodes.
bool TableHeader::takeNamesOnly() {
    columns_ = receiver_.announceColumns(line_.get_num_fields());
    receiver_.makeColumns();
    for (unsigned i = 0; i < columns_; ++i) {
        receiver_.guessType(i, isLabelName(line_.getField(static_cast<unsigned short>(i))));
    }
    return true;
}

void TableHeader::nameColumns() {
    for (unsigned i = 0; i < columns_; ++i) {
        receiver_.setName(i, line_.get_field(static_cast<unsigned short>(i)));
    }
}
