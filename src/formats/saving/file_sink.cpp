#include "formats/saving/file_sink.h"

#include <cerrno>
#include <utility>

namespace vek::formats {

namespace {

std::vector<std::string> worded(const std::string& path, unsigned losses) {
    constexpr struct {
        unsigned loss;
        const char* what;
    } kinds[] = {
        {FileReplacement::eOwner, "its owner could not be kept, the new file is yours"},
        {FileReplacement::eGroup,
         "its group could not be kept, nor the rights that the group had alone"},
        {FileReplacement::eAccessList,
         "its access list could not be kept, nobody but the owner has access now"},
        {FileReplacement::eAttributes, "not all of its extended attributes could be kept"},
    };
    std::vector<std::string> notes;
    for (const auto& kind : kinds) {
        if ((losses & kind.loss) != 0) notes.push_back(path + ": " + kind.what);
    }
    return notes;
}

}  // namespace

std::string backupOf(const std::string& path) {
    return path + ".bak";
}

FileSink::FileSink(const std::string& path, Held held, bool keepsOld)
    : path_(path), file_(std::move(held)), keepsOld_(keepsOld && file_ != nullptr) {}

FileSink::FileSink(const std::string& path, std::function<Held()> hold, bool keepsOld)
    : path_(path), hold_(std::move(hold)), keepsOld_(keepsOld) {}

FileSink::~FileSink() {
    giveUp();
}

bool FileSink::isDirect() {
    if (!file_ && hold_) {
        file_ = hold_();
        keepsOld_ = keepsOld_ && file_ != nullptr;
    }
    if (!file_) file_ = holdFile(path_);
    return file_->isWrittenDirectly();
}

void FileSink::take(std::string_view piece) {
    if (isDirect()) {
        kept_ += piece;
        return;
    }
    if (!keepsOld_) return send(piece);
    if (!kept_.empty()) send(kept_);
    kept_ = piece;
}

void FileSink::send(std::string_view text) {
    if (!std::exchange(isOpen_, true) && !file_->open()) refuse(path_, *file_);
    if (!file_->write(text)) refuse(path_, *file_);
}

std::vector<std::string> FileSink::end() {
    std::vector<std::string> notes = prepare();
    commit();
    return notes;
}

std::vector<std::string> FileSink::prepare() {
    if (keepsOld_) {
        const std::string copy = backupOf(path_);
        if (!file_->backUp(copy.c_str())) {
            file_->giveUp();
            if (file_->error() == EISDIR) refuseBackup(copy, EISDIR);
            refuse(copy, *file_);
        }
    }
    if (isDirect() || keepsOld_ || !isOpen_) send(kept_);
    if (!file_->complete()) refuse(path_, *file_);
    return worded(path_, file_->losses());
}

void FileSink::commit() {
    if (!file_->commit()) refuse(path_, *file_);
    isOpen_ = false;
}

void FileSink::giveUp() {
    if (isOpen_ || keepsOld_) file_->giveUp();
    isOpen_ = false;
}

}  // namespace vek::formats
