#include "tools/vek/browse/browser.h"

#include <algorithm>

#include "tools/vek/browse/slice.h"

namespace vek::browse {

Browser::Browser(Opening opening) : opening_(std::move(opening)) {
    opening_.watcher = nullptr;
}

void Browser::add(Log log, const std::optional<FileMark>& mark) {
    addSheet(std::move(log), mark);
    offerRecovery();
}

Sheet& Browser::addSheet(Log log, const std::optional<FileMark>& mark) {
    Opening own = opening_;
    own.format = log.opening.format;
    sheets_.push_back(std::make_unique<Sheet>(std::move(log), own, mark));
    scrolls_.emplace_back();
    current_ = sheets_.size() - 1;
    return sheet();
}

// What fails leaves a message and the sheets as they are.
void Browser::guarded(const std::function<void()>& run) {
    const auto fail = [&](const std::string& text) {
        message_ = text;
        isTrouble_ = true;
    };
    try {
        run();
    } catch (const Failure& failure) {
        fail(failure.text);
    } catch (const std::bad_alloc&) {
        fail("there is not enough memory for that");
    } catch (const std::exception& error) {
        fail(error.what());
    }
    if (isOver()) return;
    const std::string& trouble = sheet().recovery().trouble();
    if (!trouble.empty() && message_.empty()) fail(trouble);
}

void Browser::press(const std::string& key) {
    if (isOver()) return;
    if (key == "^C") {
        isOver_ = true;
        return;
    }
    if (key == "Esc" && stopWork()) return;
    if (!waits([this, key] { take(key); }, looksOn(key))) take(key);
}

// What comes while something is done is meant for what that makes. What is looked for is none of
// that: another key ends it, unless that looks on from there.
bool Browser::waits(std::function<void()> what, bool looksOn) {
    if (!job_ && waiting_.empty() && !looksOn) return false;
    waiting_.push_back(std::move(what));
    return true;
}

bool Browser::looksOn(const std::string& key) const {
    if (!search_.isRunning() || prompt_) return false;
    const KeyEntry* entry = entryOf(key);
    return entry != nullptr && (entry->act == Act::findNext || entry->act == Act::findPrevious);
}

void Browser::take(const std::string& key) {
    message_.clear();
    isTrouble_ = false;
    if (question_) {
        guarded([&] { pressQuestion(key); });
        return offerNext();
    }
    if (prompt_) return guarded([&] { pressPrompt(key); });
    if (hasHelp_) return pressHelp(key);
    search_.stop();
    const KeyEntry* entry = entryOf(key == " " ? "Space" : key);
    if (entry == nullptr) {
        message_ = concat("no key ", key, "; ? lists them all");
        return;
    }
    guarded([&] { perform(entry->act); });
    offerNext();
}

void Browser::pressPrompt(const std::string& key) {
    if (key == "Esc") {
        const auto cancelled = prompt_->cancelled;
        prompt_.reset();
        search_.stop();
        if (cancelled) cancelled();
    } else if (key == "Enter") {
        const Prompt given = std::move(*prompt_);
        prompt_.reset();
        given.answered(given.line.text());
    } else if (prompt_->line.press(key) && prompt_->typed) {
        prompt_->typed(prompt_->line.text());
    }
}

void Browser::pressQuestion(const std::string& key) {
    const Question given = std::move(*question_);
    question_.reset();
    for (const Question::Answer& answer : given.answers) {
        if (answer.key == key) return answer.run();
    }
}

void Browser::pressHelp(const std::string& key) {
    const KeyEntry* entry = entryOf(key);
    const std::size_t most = keyHelp().size() - 1;
    const Act act = entry == nullptr ? Act::cancel : entry->act;
    if (act == Act::down)
        helpTop_ = std::min(most, helpTop_ + 1);
    else if (act == Act::up)
        helpTop_ -= helpTop_ > 0 ? 1 : 0;
    else if (act == Act::pageDown)
        helpTop_ = std::min(most, helpTop_ + pageRows());
    else if (act == Act::pageUp)
        helpTop_ -= std::min(helpTop_, pageRows());
    else
        hasHelp_ = false;
}

void Browser::perform(Act act) {
    if (move(act) || choose(act) || tag(act) || edit(act) || layOut(act) || file(act)) return;
    switch (act) {
        case Act::command:
            return ask(":", "", [this](const std::string& line) { run(line); });
        case Act::help:
            hasHelp_ = true;
            helpTop_ = 0;
            return;
        case Act::redraw:
            wantsRedraw_ = true;
            return;
        case Act::cancel:
            return sheet().unmark();
        case Act::quit:
            return close();
        default:
            isOver_ = true;
    }
}

bool Browser::move(Act act) {
    Sheet& now = sheet();
    const auto page = static_cast<long long>(pageRows());
    switch (act) {
        case Act::up:
            return now.moveBy(-1), true;
        case Act::down:
            return now.moveBy(1), true;
        case Act::left:
            return now.moveColumns(-1), true;
        case Act::right:
            return now.moveColumns(1), true;
        case Act::pageUp:
            return now.moveBy(-page), true;
        case Act::pageDown:
            return now.moveBy(page), true;
        case Act::halfUp:
            return now.moveBy(-std::max(1LL, page / 2)), true;
        case Act::halfDown:
            return now.moveBy(std::max(1LL, page / 2)), true;
        case Act::first:
            return now.moveTo(0), true;
        case Act::last:
            return now.moveTo(Sheet::nowhere), true;
        case Act::firstColumn:
            return now.moveToColumn(0), true;
        case Act::lastColumn:
            return now.moveToColumn(now.columns().size()), true;
        case Act::goToRow:
            return ask("row ", "", [this](const std::string& text) { goToRow(text); }), true;
        case Act::goToTimecode:
            ask("timecode ", "", [this](const std::string& text) { goToTimecode(text); });
            return true;
        case Act::findForward:
        case Act::findBack:
            return find(act == Act::findBack), true;
        case Act::findNext:
            return findAgain(looksBack_), true;
        case Act::findPrevious:
            return findAgain(!looksBack_), true;
        default:
            return false;
    }
}

bool Browser::layOut(Act act) {
    Sheet& now = sheet();
    switch (act) {
        case Act::widen:
            return now.widen(4, shownWidth_), true;
        case Act::narrow:
            return now.widen(-4, shownWidth_), true;
        case Act::hide:
            return now.hide(), true;
        case Act::showColumns:
            return now.showAllColumns(), true;
        case Act::columnLeft:
            return now.moveColumn(-1), true;
        case Act::columnRight:
            return now.moveColumn(1), true;
        case Act::keepColumns:
            return keepColumns(), true;
        case Act::card:
            return hasCard_ = !hasCard_, true;
        default:
            return false;
    }
}

void Browser::keepColumns() {
    Sheet& now = sheet();
    const std::size_t wanted = now.columnPlace() + 1;
    now.keep(now.kept() == wanted ? 1 : wanted);
    message_ = counted(now.kept(), "column") + " stay at the left";
}

void Browser::ask(const std::string& title, const std::string& text, Answered answered) {
    prompt_ = Prompt{title, LineInput(text), std::move(answered)};
}

// The line that says what is done is drawn first.
void Browser::later(const std::string& what, std::function<void()> job) {
    message_ = what + " ...";
    job_ = Job{[job = std::move(job)] { return job(), true; }, [] { return "left"; }};
}

// What holds a step of the edits open goes with the last slice, before all settles.
void Browser::inSlices(const std::string& what, std::size_t all, Some some,
                       std::function<void()> end) {
    message_ = what + " ...";
    auto done = std::make_shared<std::size_t>(0);
    const auto told = [done, all] {
        return std::to_string(std::min(*done, all) * 100 / std::max<std::size_t>(1, all)) + " %";
    };
    job_ =
        Job{[this, what, some = std::move(some), end = std::move(end), done, told]() mutable {
                const Slice slice;
                std::size_t more = 0;
                do {
                    *done += more = some();
                } while (more > 0 && !slice.isOver());
                message_ = concat(what, " ... ", told(), ", Esc ends it");
                if (more > 0) return false;
                some = nullptr;
                settle();
                message_.clear();
                end();
                return true;
            },
            [what, told] { return concat("ended ", what, " at ", told(), "; u takes it back"); }};
}

// Edits the rows as one step.
void Browser::forEachRow(const std::string& what, Sheet::Rows rows, RowDone one,
                         std::function<void()> end) {
    struct Way {
        Way(Sheet::Rows all, EditLog& edits) : rows(std::move(all)), step(edits) {}

        Sheet::Rows rows;
        EditLog::Step step;
        std::size_t done = 0;
    };
    auto way = std::make_shared<Way>(std::move(rows), sheet().edits());
    const std::size_t count = way->rows.size();
    const auto some = [way = std::move(way), one = std::move(one)]() -> std::size_t {
        if (way->done == way->rows.size()) return 0;
        one(way->rows[way->done++]);
        return 1;
    };
    inSlices(what, count, some, std::move(end));
}

// Work that must come to its end goes on.
bool Browser::stopWork() {
    if (!job_) {
        if (search_.isRunning()) waiting_.clear();
        return false;
    }
    if (!job_->stopped) return false;
    waiting_.clear();
    const std::string told = job_->stopped();
    job_.reset();
    settle();
    message_ = told;
    return true;
}

// What was edited, here or in another sheet, is shown and written down.
void Browser::settle() {
    for (const auto& sheet : sheets_) sheet->settle();
}

bool Browser::isFree() const {
    return !job_ && !search_.isRunning() && !command_ && !isOver();
}

// Keys that waited follow as soon as nothing more is to be done before them.
void Browser::work() {
    workOn();
    while (isFree() && !waiting_.empty()) {
        const std::function<void()> next = std::move(waiting_.front());
        waiting_.pop_front();
        next();
    }
}

void Browser::workOn() {
    if (job_) return workOnJob();
    if (!search_.isRunning() || isOver()) return;
    if (search_.step(sheet())) return showFound();
    message_ = concat("looking for ", search_.text(), " ... ",
                      std::to_string(search_.percent(sheet())), " %");
}

// A job may leave another one.
void Browser::workOnJob() {
    Job job = std::move(*job_);
    job_.reset();
    bool isDone = true;
    message_.clear();
    guarded([&] { isDone = job.slice(); });
    if (!isDone) {
        job_ = std::move(job);
        return;
    }
    job = {};
    if (job_) return;
    guarded([&] { settle(); });
    offerNext();
}

void Browser::click(std::size_t x, std::size_t y) {
    if (!waits([this, x, y] { takeClick(x, y); })) takeClick(x, y);
}

void Browser::takeClick(std::size_t x, std::size_t y) {
    if (isOver() || prompt_ || question_ || hasHelp_ || y < firstLine_) return;
    const std::size_t place = scrolls_[current_].top + y - firstLine_;
    if (y - firstLine_ >= page_ || place >= sheet().rows().size()) return;
    sheet().moveTo(static_cast<unsigned>(place));
    for (const Spot& spot : spots_) {
        if (x >= spot.x && x < spot.x + spot.width) sheet().moveToColumn(spot.column);
    }
}

void Browser::turn(int rows) {
    if (!waits([this, rows] { takeTurn(rows); })) takeTurn(rows);
}

void Browser::takeTurn(int rows) {
    if (isOver() || prompt_ || question_) return;
    if (!hasHelp_) return sheet().moveBy(rows);
    pressHelp(rows < 0 ? "Up" : "Down");
}

std::optional<std::vector<std::string>> Browser::takeCommand() {
    return std::exchange(command_, std::nullopt);
}

std::vector<std::string> Browser::recoveryFiles() const {
    std::vector<std::string> files;
    for (const auto& sheet : sheets_) {
        const std::string& path = sheet->recovery().path();
        if (sheet->isUnsaved() && !path.empty()) files.push_back(path);
    }
    return files;
}

}  // namespace vek::browse
