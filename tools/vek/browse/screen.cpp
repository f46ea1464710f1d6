#include "tools/vek/browse/screen.h"

#define NCURSES_NOMACROS 1
#define NCURSES_WIDECHAR 1
#include <ncurses.h>

#include "formats/text/width.h"
#include "tools/vek/cli/terminal.h"

namespace vek::browse {

namespace {

constexpr int shortestWait = 0;
constexpr int longestWait = 500;  // milliseconds between looks at whether somebody ends the program

std::string utf8(wint_t character) {
    const auto code = static_cast<unsigned>(character);
    std::string out;
    const auto add = [&](unsigned byte) { out += static_cast<char>(byte); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xC0 | (code >> 6));
        add(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        add(0xE0 | (code >> 12));
        add(0x80 | ((code >> 6) & 0x3F));
        add(0x80 | (code & 0x3F));
    } else {
        add(0xF0 | (code >> 18));
        add(0x80 | ((code >> 12) & 0x3F));
        add(0x80 | ((code >> 6) & 0x3F));
        add(0x80 | (code & 0x3F));
    }
    return out;
}

std::string nameOf(wint_t character) {
    switch (character) {
        case '\t':
            return "Tab";
        case '\r':
        case '\n':
            return "Enter";
        case 27:
            return "Esc";
        case 8:
        case 127:
            return "Backspace";
        default:
            break;
    }
    if (character < 32) return std::string("^") + static_cast<char>(character + 64);
    return utf8(character);
}

std::string nameOfFunction(wint_t code) {
    constexpr struct {
        wint_t code;
        const char* name;
    } names[] = {
        {KEY_UP, "Up"},       {KEY_DOWN, "Down"},  {KEY_LEFT, "Left"},
        {KEY_RIGHT, "Right"}, {KEY_PPAGE, "PgUp"}, {KEY_NPAGE, "PgDn"},
        {KEY_HOME, "Home"},   {KEY_END, "End"},    {KEY_BACKSPACE, "Backspace"},
        {KEY_DC, "Del"},      {KEY_IC, "Ins"},     {KEY_BTAB, "BackTab"},
        {KEY_ENTER, "Enter"},
    };
    for (const auto& known : names) {
        if (known.code == code) return known.name;
    }
    for (unsigned n = 1; n <= 12; ++n) {
        if (code == static_cast<wint_t>(KEY_F(n))) return "F" + std::to_string(n);
    }
    return {};
}

// The terminal as the browser has it; as it was when this goes.
class Terminal {
public:
    explicit Terminal(bool hasColor) {
        takeCharactersForUtf8();
        screen_ = ::newterm(nullptr, stdout, stdin);
        if (screen_ == nullptr) {
            throw Failure{wrongUsage,
                          "browse: this terminal cannot be drawn on (TERM says which it is); vek "
                          "show prints a log"};
        }
        ::raw();
        ::noecho();
        ::nonl();
        ::keypad(stdscr, TRUE);
        ::set_escdelay(50);
        ::mousemask(BUTTON1_PRESSED | BUTTON1_CLICKED | BUTTON4_PRESSED | BUTTON5_PRESSED, nullptr);
        ::mouseinterval(0);
        if (hasColor && ::has_colors()) chooseColors();
    }
    ~Terminal() {
        ::endwin();
        ::delscreen(screen_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    attr_t looksLike(Look look) const;

private:
    enum Pair : short { rowPair = 1, taggedPair, rangePair, troublePair, titlePair };

    void chooseColors() {
        hasColors_ = true;
        ::start_color();
        ::use_default_colors();
        const bool isRich = COLORS >= 256;
        ::init_pair(rowPair, -1, isRich ? 238 : -1);
        ::init_pair(taggedPair, isRich ? 214 : COLOR_YELLOW, -1);
        ::init_pair(rangePair, isRich ? 81 : COLOR_CYAN, -1);
        ::init_pair(troublePair, isRich ? 203 : COLOR_RED, -1);
        ::init_pair(titlePair, isRich ? 75 : COLOR_BLUE, -1);
    }

    SCREEN* screen_ = nullptr;
    bool hasColors_ = false;
};

attr_t Terminal::looksLike(Look look) const {
    const auto colored = [&](Pair pair, attr_t otherwise) {
        return hasColors_ ? static_cast<attr_t>(COLOR_PAIR(pair)) : otherwise;
    };
    switch (look) {
        case Look::title:
            return A_BOLD | colored(titlePair, A_UNDERLINE);
        case Look::cell:
        case Look::bar:
            return A_REVERSE;
        case Look::row:
            return hasColors_ && COLORS >= 256 ? colored(rowPair, A_BOLD) : attr_t{A_BOLD};
        case Look::tagged:
            return colored(taggedPair, A_BOLD);
        case Look::range:
            return A_UNDERLINE | colored(rangePair, A_NORMAL);
        case Look::trouble:
            return A_BOLD | colored(troublePair, A_NORMAL);
        case Look::faint:
            return A_DIM;
        default:
            return A_NORMAL;
    }
}

bool fillsItsWidth(Look look) {
    return look == Look::cell || look == Look::bar || look == Look::row || look == Look::range;
}

// Only what differs from the screen goes to the terminal.
void draw(const Terminal& terminal, const Picture& picture) {
    ::erase();
    for (std::size_t y = 0; y < picture.lines.size(); ++y) {
        for (const Piece& piece : picture.lines[y]) {
            std::string text = piece.text;
            const std::size_t width = displayWidth(text);
            if (fillsItsWidth(piece.look) && width < piece.width) {
                text.append(piece.width - width, ' ');
            }
            ::attrset(terminal.looksLike(piece.look));
            ::mvaddstr(static_cast<int>(y), static_cast<int>(piece.x), text.c_str());
        }
    }
    ::attrset(A_NORMAL);
    ::curs_set(picture.hasCursor ? 1 : 0);
    if (picture.hasCursor) {
        ::move(static_cast<int>(picture.cursorY), static_cast<int>(picture.cursorX));
    }
    ::refresh();
}

void takeMouse(Browser& browser) {
    MEVENT event;
    if (::getmouse(&event) != OK) return;
    if ((event.bstate & BUTTON4_PRESSED) != 0) return browser.turn(-3);
    if ((event.bstate & BUTTON5_PRESSED) != 0) return browser.turn(3);
    browser.click(static_cast<std::size_t>(event.x), static_cast<std::size_t>(event.y));
}

// False when no key came.
bool takeKey(Browser& browser) {
    ::timeout(browser.isBusy() ? shortestWait : longestWait);
    wint_t code = 0;
    const int kind = ::get_wch(&code);
    if (kind == ERR) return false;
    if (kind == OK) {
        browser.press(nameOf(code));
    } else if (code == KEY_MOUSE) {
        takeMouse(browser);
    } else if (const std::string name = nameOfFunction(code); !name.empty()) {
        browser.press(name);
    }
    return true;
}

void runOutside(const std::function<void()>& run) {
    ::def_prog_mode();
    ::endwin();
    run();
    ::reset_prog_mode();
    ::clearok(stdscr, TRUE);
    ::refresh();
}

}  // namespace

void showOnScreen(Browser& browser, bool hasColor,
                  const std::function<void(const std::vector<std::string>&)>& runCommand) {
    const NotedEndings endings;
    const Terminal terminal(hasColor);
    bool isDrawn = false;
    while (!browser.isOver() && !endings.isAsked()) {
        if (!isDrawn) {
            draw(terminal,
                 browser.picture(static_cast<std::size_t>(COLS), static_cast<std::size_t>(LINES)));
        }
        isDrawn = !takeKey(browser);
        if (isDrawn && browser.isBusy()) {
            browser.work();
            isDrawn = false;
        }
        if (const auto command = browser.takeCommand()) {
            runOutside([&] { runCommand(*command); });
        }
        if (browser.takeRedraw()) ::clearok(stdscr, TRUE);
    }
}

}  // namespace vek::browse
