#include "formats/formats.h"
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

void Browser::open(const std::string& path) {
    if (path.empty()) return;
    Opening opening = opening_;
    opening.format.reset();
    add(openLog(path, opening));
}

void Browser::offerRecovery() {
    Recovery& recovery = sheet().recovery();
    recovery.restore();
    if (recovery.isInUse()) {
        message_ = concat("another vek browse edits this log; its edits not saved stand in ",
                          recovery.path());
        isTrouble_ = true;
        return;
    }
    if (!recovery.exists()) return;
    const std::optional<FileMark> mark = markOf(sheet().log().path);
    const auto discard = [this] { sheet().recovery().remove(); };
    if (!mark || !recovery.fits(*mark)) {
        question_ = Question{concat(recovery.path(),
                                    " holds edits of another state of this file: "
                                    "(d)elete it, or any other key"),
                             {{"d", discard}}};
        return;
    }
    question_ = Question{
        concat(recovery.path(),
               " holds edits not saved: (r)ecover or (d)elete them, any other key"),
        {{"r",
          [this] {
              later("recovering", [this] {
                  message_ = counted(sheet().recover(), "change") + " recovered; ^S saves them";
              });
          }},
         {"d", discard}}};
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
    const Sheet& from = sheet();
    const Sheet::Rows rows = from.taggedRows();
    Sheet& to = *sheets_[(current_ + 1) % sheets_.size()];
    if (rows.empty()) {
        message_ = "no row is tagged; t tags one";
        return;
    }
    const std::size_t lost = to.append(from, rows);
    message_ = concat(counted(rows.size(), "row"), " copied to ", to.log().name);
    if (lost > 0) message_ += concat("; it has no place for ", counted(lost, "column"));
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
                               sheet().save();
                               closeNow();
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
