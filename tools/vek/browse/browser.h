#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/vek/browse/keys.h"
#include "tools/vek/browse/picture.h"
#include "tools/vek/browse/prompt.h"
#include "tools/vek/browse/search.h"
#include "tools/vek/browse/sheet.h"

namespace vek::browse {

/// The browser without its terminal: takes keys, does with the sheets what they mean, and says what
/// is to be seen. Whatever fails is a message, and the sheets stay as they were.
class Browser {
public:
    /// How a log is opened that somebody asks for by `^O`.
    explicit Browser(Opening opening);

    /// A log, and the mark that its file had before it was read.
    void add(Log log, const std::optional<FileMark>& mark);
    /// Goes to the log that was added first, unless something is asked about another one.
    void goToFirst() { current_ = question_ ? current_ : 0; }

    /// A key by its name, or a character. Work that takes long is left to `work`; a key that comes
    /// while it is done waits for its end, but Esc, which ends it.
    void press(const std::string& key);
    /// A click on the picture drawn last; wheels turn by so many rows.
    void click(std::size_t x, std::size_t y);
    void turn(int rows);
    /// Whether something is to be done while no key comes.
    bool isBusy() const { return job_ || search_.isRunning() || !waiting_.empty(); }
    /// Does a slice of it.
    void work();

    Picture picture(std::size_t width, std::size_t height);

    bool isOver() const { return isOver_ || sheets_.empty(); }
    bool takeRedraw() { return std::exchange(wantsRedraw_, false); }
    /// The words of a command that is to be run outside of the screen; none as a rule.
    std::optional<std::vector<std::string>> takeCommand();
    void say(const std::string& text) { message_ = text; }
    Sheet& sheet() { return *sheets_[current_]; }
    const Sheet& sheet() const { return *sheets_[current_]; }
    std::size_t sheetCount() const { return sheets_.size(); }
    std::vector<std::string> recoveryFiles() const;
    const std::string& message() const { return message_; }

private:
    friend class Drawing;
    using Answered = std::function<void(const std::string&)>;

    void guarded(const std::function<void()>& run);
    bool waits(std::function<void()> what, bool looksOn = false);
    bool looksOn(const std::string& key) const;
    bool isFree() const;
    void take(const std::string& key);
    void takeClick(std::size_t x, std::size_t y);
    void takeTurn(int rows);
    void workOn();
    void workOnJob();
    void pressPrompt(const std::string& key);
    void pressQuestion(const std::string& key);
    void pressHelp(const std::string& key);
    void perform(Act act);
    bool move(Act act);
    bool choose(Act act);
    bool tag(Act act);
    bool edit(Act act);
    bool layOut(Act act);
    bool file(Act act);
    void ask(const std::string& title, const std::string& text, Answered answered);
    void later(const std::string& what, std::function<void()> job);
    /// Does a little, and answers how much; 0 when nothing is left.
    using Some = std::function<std::size_t()>;
    void inSlices(const std::string& what, std::size_t all, Some some, std::function<void()> end);
    using RowDone = std::function<void(unsigned row)>;
    void forEachRow(const std::string& what, Sheet::Rows rows, RowDone one,
                    std::function<void()> end);
    bool stopWork();
    void settle();
    void goToRow(const std::string& text);
    void goToTimecode(const std::string& text);
    void find(bool isBack);
    void findAgain(bool isBack);
    void showFound();
    void sortBy(std::vector<unsigned> columns, bool isReversed);
    void sortAlso();
    void filter(const std::string& name, const Selection& selection);
    void filterByValue();
    void tagRows();
    void invertTags();
    void tagBy(const std::string& condition, Sheet::Tagging how);
    void tagEach(Sheet::Rows rows, Sheet::Tagging how, std::function<void()> end);
    void editCell();
    void editTagged();
    void withTagged(std::function<void(Sheet::Rows rows)> use);
    void insertRow(bool isBehind);
    void deleteRows();
    void deleteEach(const Sheet::Rows& rows, std::function<void()> end);
    void deleteTagged();
    void rename();
    void undo(bool isRedo);
    void keepColumns();
    void save();
    void saveNow(bool overwrites);
    void saveAs(bool asShown);
    bool isOwnFile(const std::string& path) const;
    void open(const std::string& path);
    Sheet& addSheet(Log log, const std::optional<FileMark>& mark);
    void offerRecovery();
    void offerNext();
    void askToDrop(const std::string& path);
    void recover(Sheet& sheet, const std::string& path);
    void recoverInto(Sheet& sheet, const std::string& path);
    std::size_t placeOf(const Sheet& sheet) const;
    void switchSheet(int by);
    void copyTagged();
    void run(const std::string& line);
    void close();
    void closeNow();
    std::size_t pageRows() const { return page_ == 0 ? 1 : page_; }

    Opening opening_;
    std::vector<std::unique_ptr<Sheet>> sheets_;
    std::size_t current_ = 0;
    std::optional<Prompt> prompt_;
    std::optional<Question> question_;
    struct Job {
        std::function<bool()> slice;                // whether it is over
        std::function<std::string()> stopped = {};  // what is said then; null for what must end
    };
    std::optional<Job> job_;
    struct Offer {
        Sheet* sheet;
        std::string path;
    };
    std::deque<Offer> offers_;  // of edits to be recovered
    std::deque<std::function<void()>> waiting_;
    Search search_;
    bool looksBack_ = false;  // what was looked for at first
    std::string message_;
    bool isTrouble_ = false;
    bool hasCard_ = false;
    bool hasHelp_ = false;
    std::size_t helpTop_ = 0;
    bool isOver_ = false;
    bool wantsRedraw_ = false;
    std::optional<std::vector<std::string>> command_;
    // Of the picture drawn last.
    std::size_t page_ = 20;
    struct Spot {
        std::size_t x;
        std::size_t width;
        std::size_t column;
    };
    std::vector<Spot> spots_;
    std::vector<std::vector<Piece>> lines_;
    std::size_t firstLine_ = 2;
    std::size_t shownWidth_ = 12;
    struct Scroll {
        unsigned top = 0;
        std::size_t left = 0;
    };
    std::vector<Scroll> scrolls_;
};

}  // namespace vek::browse
