#include <algorithm>
#include <filesystem>

#include "formats/formats.h"
#include "formats/reading/open_log.h"
#include "tools/vek/browse/browser.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/shell_line.h"
#include "tools/vek/cli/terminal.h"

namespace vek::browse {

namespace {

std::string told(const std::string& what, const std::vector<std::string>& notes) {
    std::string text = what;
    for (const std::string& note : notes) text += "; " + note;
    return text;
}

}  // namespace

bool Browser::file(Act act) {
    switch (act) {
        case Act::save:
            return save(), true;
        case Act::saveAs:
        case Act::saveShown:
            return saveAs(act == Act::saveShown), true;
        case Act::open:
            return ask("open ", "", [this](const std::string& path) { open(path); }), true;
        case Act::nextSheet:
            return switchSheet(1), true;
        case Act::previousSheet:
            return switchSheet(-1), true;
        case Act::copyTagged:
            return copyTagged(), true;
        default:
            return false;
    }
}

// Nothing is written over what another program wrote without being asked.
void Browser::save() {
    if (!sheet().isChangedOnDisk()) return saveNow(false);
    question_ = Question{
        "the file was changed by another program: (o)verwrite it with what is "
        "here, or any other key",
        {{"o", [this] { saveNow(true); }}}};
}

void Browser::saveNow(bool overwrites) {
    if (!sheet().isUnsaved() && !sheet().isChangedOnDisk()) {
        message_ = "nothing is to be saved";
        return;
    }
    later("saving", [this, overwrites] { message_ = told("saved", sheet().save(overwrites)); });
}

void Browser::saveAs(bool asShown) {
    const char* title = asShown ? "save what is shown as " : "save all as ";
    ask(title, "", [this, asShown](const std::string& path) {
        if (path.empty()) return;
        if (!asShown && isOwnFile(path)) return save();
        const auto write = [this, asShown, path] {
            later("saving", [this, asShown, path] {
                message_ = told("saved as " + path, sheet().saveAs(path, asShown));
            });
        };
        targetFor(sheet().log(), path);
        if (!isThere(path)) return write();
        question_ =
            Question{concat(path, " is there: (o)verwrite it, or any other key"), {{"o", write}}};
    });
}

bool Browser::isOwnFile(const std::string& path) const {
    std::error_code ignored;
    return std::filesystem::equivalent(path, sheet().log().path, ignored);
}

void Browser::open(const std::string& path) {
    if (path.empty()) return;
    Opening opening = opening_;
    opening.format.reset();
    const std::optional<FileMark> mark = markOf(path);
    add(openLog(path, opening), mark);
}

void Browser::offerRecovery() {
    for (const Recovery::Other& other : sheet().recovery().others()) {
        if (other.isInUse) {
            message_ = concat("another vek browse edits this log; its edits not saved stand in ",
                              other.path);
        } else {
            offers_.push_back({&sheet(), other.path});
        }
    }
    offerNext();
}

std::size_t Browser::placeOf(const Sheet& sheet) const {
    const auto isIt = [&](const auto& one) { return one.get() == &sheet; };
    return static_cast<std::size_t>(std::find_if(sheets_.begin(), sheets_.end(), isIt) -
                                    sheets_.begin());
}

// One after the other, each where its log is.
void Browser::offerNext() {
    if (offers_.empty() || question_ || prompt_ || job_ || isOver()) return;
    const Offer offer = std::move(offers_.front());
    offers_.pop_front();
    const std::size_t place = placeOf(*offer.sheet);
    if (place == sheets_.size()) return offerNext();
    current_ = place;
    const std::optional<FileMark> mark = markOf(sheet().log().path);
    const auto drop = [this, path = offer.path] { askToDrop(path); };
    if (!mark || !Recovery::fits(offer.path, *mark)) {
        question_ = Question{concat(offer.path,
                                    " holds edits of another state of this file: "
                                    "(d)elete it, or any other key"),
                             {{"d", drop}}};
        return;
    }
    const bool isFirst = !sheet().edits().canUndo();
    question_ = Question{
        concat(offer.path, " holds edits not saved: (r)ecover ",
               isFirst ? "" : "in a sheet of their own ", "or (d)elete them, any other key"),
        {{"r", [this, offer] { recover(*offer.sheet, offer.path); }}, {"d", drop}}};
}

// A key that somebody typed ahead, not knowing of the question, is not enough.
void Browser::askToDrop(const std::string& path) {
    question_ = Question{
        concat("the edits in ", path, " are lost then: (y)es, delete them, or any other key"),
        {{"y", [path] { Recovery::drop(path); }}}};
}

// Edits of two browsers are two logs: each is made to the log as it is on the disk.
void Browser::recover(Sheet& sheet, const std::string& path) {
    later("recovering", [this, &sheet, path] {
        if (!sheet.edits().canUndo()) return recoverInto(sheet, path);
        const std::optional<FileMark> mark = markOf(sheet.log().path);
        Sheet& other = addSheet(openLog(sheet.log().path, sheet.opening()), mark);
        recoverInto(other, path);
    });
    job_->stopped = nullptr;
}

void Browser::recoverInto(Sheet& sheet, const std::string& path) {
    std::error_code ignored;
    const std::uintmax_t size = std::filesystem::file_size(path, ignored);
    auto way = std::make_shared<Sheet::Recovering>(sheet, path);
    auto edits = std::make_shared<std::size_t>(0);
    const auto some = [way = std::move(way), edits] {
        const std::size_t done = way->step();
        *edits = way->edits();
        return done;
    };
    inSlices("recovering", size, some,
             [this, edits] { message_ = counted(*edits, "change") + " recovered; ^S saves them"; });
    job_->stopped = nullptr;
}

void Browser::switchSheet(int by) {
    const std::size_t count = sheets_.size();
    if (count == 1) message_ = "there is one log; ^O opens another";
    current_ = (current_ + count + static_cast<std::size_t>(by + static_cast<int>(count))) % count;
}

void Browser::copyTagged() {
    if (sheets_.size() == 1) {
        message_ = "there is one log; ^O opens another to copy to";
        return;
    }
    withTagged([this](Sheet::Rows rows) {
        Sheet& to = *sheets_[(current_ + 1) % sheets_.size()];
        std::string told = concat(counted(rows.size(), "row"), " copied to ", to.log().name);
        const std::size_t count = rows.size();
        auto way = std::make_shared<Sheet::Appending>(to, sheet(), std::move(rows));
        const std::size_t lost = way->lost();
        if (lost > 0) told += concat("; it has no place for ", counted(lost, "column"));
        inSlices(
            "copying", count, [way = std::move(way)] { return way->step(); },
            [this, told] { message_ = told; });
    });
}

void Browser::run(const std::string& line) {
    std::vector<std::string> words = bashLine(concat("vek ", line, " "), "", "").words;
    if (!words.empty()) command_ = std::move(words);
}

void Browser::close() {
    if (!sheet().isUnsaved()) return closeNow();
    question_ = Question{"edits are not saved: (s)ave, (d)iscard, or any other key to stay",
                         {{"s",
                           [this] {
                               if (sheet().isChangedOnDisk()) return save();
                               later("saving", [this] {
                                   sheet().save();
                                   closeNow();
                               });
                           }},
                          {"d", [this] {
                               sheet().discard();
                               closeNow();
                           }}}};
}

void Browser::closeNow() {
    sheets_.erase(sheets_.begin() + static_cast<std::ptrdiff_t>(current_));
    scrolls_.erase(scrolls_.begin() + static_cast<std::ptrdiff_t>(current_));
    if (current_ >= sheets_.size()) current_ = 0;
    search_.stop();
}

}  // namespace vek::browse
