#include "host/text_departure_impl.h"

TextDeparture::TextDeparture(const char* path, bool toDisk)
    : target_(toDisk), works_(path != nullptr && target_.open(path)) {}

void TextDeparture::send(const char* text, std::size_t size) {
    works_ = works_ && target_.write(text, size);
}

bool TextDeparture::end() {
    return works_ && target_.commit();
}
