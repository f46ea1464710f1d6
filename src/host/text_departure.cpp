#include "host/text_departure.h"

TextDeparture::TextDeparture(const char* path, bool toDisk) : target_(toDisk) {
    target_.find(path);
    if (goesInPieces()) {
        open();
    }
}

// A target that could not be opened takes nothing and is not committed.
void TextDeparture::open() {
    isOpened_ = true;
    target_.open();
}

void TextDeparture::send(const char* text, std::size_t size) {
    if (!isOpened_) {
        open();
    }
    target_.write({text, size});
}

bool TextDeparture::end() {
    if (!isOpened_) {
        open();
    }
    return target_.commit();
}
