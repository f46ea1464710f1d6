#include "tools/vek/browse/prompt.h"

namespace vek::browse {

namespace {

bool isInside(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

bool isCharacter(const std::string& key) {
    if (key.size() == 1) return static_cast<unsigned char>(key[0]) >= ' ' && key[0] != 0x7F;
    return !key.empty() && static_cast<unsigned char>(key[0]) >= 0x80;
}

std::size_t LineInput::before() const {
    std::size_t at = at_;
    while (at > 0 && isInside(text_[--at])) {
    }
    return at;
}

std::size_t LineInput::behind() const {
    std::size_t at = at_ < text_.size() ? at_ + 1 : at_;
    while (at < text_.size() && isInside(text_[at])) ++at;
    return at;
}

bool LineInput::press(const std::string& key) {
    const std::string typed = key == "Space" ? " " : key;
    if (isCharacter(typed)) {
        text_.insert(at_, typed);
        at_ += typed.size();
    } else if (key == "Backspace") {
        const std::size_t from = before();
        text_.erase(from, at_ - from);
        at_ = from;
    } else if (key == "Del") {
        text_.erase(at_, behind() - at_);
    } else if (key == "Left") {
        at_ = before();
    } else if (key == "Right") {
        at_ = behind();
    } else if (key == "Home" || key == "^A") {
        at_ = 0;
    } else if (key == "End" || key == "^E") {
        at_ = text_.size();
    } else if (key == "^U") {
        text_.erase(0, at_);
        at_ = 0;
    } else if (key == "^K") {
        text_.erase(at_);
    } else {
        return false;
    }
    return true;
}

}  // namespace vek::browse
