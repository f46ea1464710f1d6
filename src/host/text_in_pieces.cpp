#include "host/text_in_pieces.h"

#include <vekdb/host/text_util.h>
#include "host/disk_flush.h"
#include "host/text_departure.h"

#include <cassert>
#include <utility>

bool TextInPieces::beginLoad(TextFile& file, const Path& path, char separator) {
    LightweightString<char> name;
    if (!pathToUTF8(path, name)) {
        file.clear();
        return false;
    }
    return keepArriving(file, TextArrival::begin(name.c_str()), separator);
}

bool TextInPieces::beginLoad(TextFile& file, int descriptor, char separator) {
    return keepArriving(file, TextArrival::begin(descriptor), separator);
}

bool TextInPieces::keepArriving(TextFile& file, Quor::Ptr<TextArrival> arrival, char separator) {
    file.clear();
    if (!arrival) {
        return false;
    }
    file.block_ = arrival->text();
    file.textSize_ = file.loadedSize_ = file.block_->size();
    file.separator_ = separator;
    file.arrival_ = std::move(arrival);
    return true;
}

std::string_view TextInPieces::textSoFar(const TextFile& file) {
    if (!file.block_) {
        return "";
    }
    if (file.arrival_ && file.arrived_ == 0) {
        file.arrived_ = file.arrival_->waitBeyond(0);
    }
    return {file.block_->data(), file.arrival_ ? file.arrived_ : file.textSize_};
}

void TextInPieces::awaitAll(const TextFile& file) {
    if (file.arrival_) {
        file.arrived_ = file.arrival_->waitBeyond(file.textSize_ - 1);
    }
}

void TextInPieces::beginSave(TextFile& file, const Path& path) {
    LightweightString<char> name;
    const bool isPath = pathToUTF8(path, name);
    file.departure_ =
        Quor::Ptr<TextDeparture>(new TextDeparture(isPath ? name.c_str() : "", DiskFlush::isOn));
}

bool TextInPieces::endSave(TextFile& file) {
    assert(file.departure_);
    file.sendLines();
    const bool isSaved = file.departure_->end();
    file.clear();
    return isSaved;
}
