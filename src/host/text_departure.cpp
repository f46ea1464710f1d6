#include "host/text_departure.h"

#include <utility>

TextDeparture::TextDeparture(std::string path, bool toDisk)
    : target_(toDisk),
      path_(std::move(path)),
      goesInPieces_(!FileIO::isWrittenDirectly(path_.c_str())) {
    if (goesInPieces_) {
        open();
    }
}

// A target that could not be opened takes nothing and is not committed.
void TextDeparture::open() {
    isOpened_ = true;
    target_.open(path_);
}

void TextDeparture::send(const char* text, std::size_t size) {
    if (!isOpened_) {
        open();
    }
    target_.write(text, size);
}

bool TextDeparture::end() {
    if (!isOpened_) {
        open();
    }
    return target_.commit();
}
