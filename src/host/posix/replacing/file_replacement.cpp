#include <vekdb/host/file_replacement.h>

#include "host/posix/replacing/attributes.h"
#include "host/posix/replacing/byte_copy.h"
#include "host/posix/replacing/held_file.h"
#include "host/posix/replacing/in_place.h"
#include "host/posix/replacing/place.h"
#include "host/posix/replacing/temporary.h"

#include <cerrno>
#include <string>

#include <fcntl.h>

namespace {

using FileIO::Descriptor;
using FileIO::systemCalls;

// Who puts something new in a file's place waits a little for those who change it, and no longer.
constexpr unsigned kShortWait = 1000;
constexpr int kMostChanges = 10;
[[maybe_unused]] constexpr off_t kSyncAtOnce = off_t{8} << 20;

// Best effort: the new contents already stand under their name.
void flushFolder(int folder) {
    const Descriptor opened(
        systemCalls().openAt(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0));
    if (opened.isOpen()) {
        systemCalls().sync(opened.get());
    }
}

}  // namespace

class FileReplacement::Steps {
public:
    explicit Steps(bool toDisk) : toDisk_(toDisk) {}

    bool find(const char* path) {
        isFound_ = settle(place_.find(path, true));
        return isFound_;
    }

    bool isDirect() const {
        return place_.kind() == Place::Kind::direct || place_.kind() == Place::Kind::descriptor;
    }

    bool hold(unsigned milliseconds) {
        if (!isFound_ || isDirect()) {
            return isFound_;
        }
        isHeld_ = settle(old_.hold(place_, milliseconds)) && settle(checkNames());
        isRefused_ = !isHeld_;
        return isHeld_;
    }

    bool backUp(const char* path) {
        const FileTrouble trouble = old_.isOpen() ? copyFor(path) : FileTrouble::ofSystem(ENOENT);
        trouble_ = trouble;
        return !trouble;
    }

    bool open() {
        if (!mayOpen()) {
            return false;
        }
        isGivenUp_ = false;
        isOpen_ = settle(isDirect() ? openDirect() : openBeside());
        return isOpen_;
    }

    bool write(std::string_view text) {
        if (!isOpen_) {
            return false;
        }
        written_ += static_cast<off_t>(text.size());
        const int error = writeAll(file(), text.data(), text.size());
        beginSync();
        return error == 0 || stop(FileTrouble::ofSystem(error));
    }

    bool complete() {
        if (!isOpen_ || isDirect() || isReady_) {
            return isOpen_;
        }
        isReady_ = ready();
        return isReady_ || stop(trouble_);
    }

    bool commit() {
        if (!complete()) {
            return false;
        }
        const FileTrouble trouble = isDirect() ? closeDirect() : replace();
        stop(trouble);
        return !trouble;
    }

    void giveUp() {
        stop(trouble_);
        isGivenUp_ = true;
    }

    unsigned losses() const { return losses_; }
    const FileTrouble& trouble() const { return trouble_; }
    const char* oldBeside() const { return beside_.empty() ? nullptr : beside_.c_str(); }

private:
    // What was given up may succeed another time: a disk may have been full. What was not there or
    // not granted before is not given up, nor are old bytes that are left beside the file.
    bool mayOpen() const {
        const bool isFinal = isRefused_ || !beside_.empty();
        return isFound_ && !isFinal && (!trouble_ || isGivenUp_);
    }

    bool settle(FileTrouble trouble) {
        trouble_ = trouble;
        return !trouble;
    }

    bool stop(FileTrouble trouble) {
        isOpen_ = isReady_ = false;
        written_ = begun_ = 0;
        temporary_.remove();
        copy_.remove();
        direct_ = Descriptor();
        return settle(trouble);
    }

    // The disk works while the rest is being made, so that there is less to wait for at the end.
    // Where this cannot be had, or fails, all is waited for there.
    void beginSync() {
#ifdef SYNC_FILE_RANGE_WRITE
        if (!toDisk_ || isDirect() || written_ - begun_ < kSyncAtOnce) {
            return;
        }
        const int error = errno;
        ::sync_file_range(file(), begun_, written_ - begun_, SYNC_FILE_RANGE_WRITE);
        errno = error;
        begun_ = written_;
#endif
    }

    int file() const {
        return isDirect() ? direct_.get() : temporary_.file();
    }

    // Whoever put another's file here under a second name would have it overwritten.
    FileTrouble checkNames() const {
        const bool hasFurther = place_.kind() == Place::Kind::file && place_.status().st_nlink > 1;
        const bool isSticky = (place_.folderStatus().st_mode & S_ISVTX) != 0;
        const bool isOfFolder = place_.status().st_uid == place_.folderStatus().st_uid;
        if (hasFurther && place_.isExposed() && (isSticky || !isOfFolder)) {
            return {FileTrouble::foreignName, EACCES};
        }
        return {};
    }

    FileTrouble openDirect() {
        if (place_.kind() != Place::Kind::descriptor) {
            return place_.openDirect(direct_);
        }
        direct_ = Descriptor(systemCalls().duplicate(place_.descriptor()));
        return direct_.isOpen() ? FileTrouble() : FileTrouble::ofCall();
    }

    // A file that may not be written to is not to be replaced either.
    FileTrouble openBeside() {
        if (const FileTrouble trouble = isHeld_ ? checkPlace() : place_.look()) {
            return trouble;
        }
        const bool isThere = place_.kind() != Place::Kind::nothing;
        if (isThere && systemCalls().mayWriteAt(place_.folder(), place_.name().c_str()) != 0) {
            return FileTrouble::ofCall();
        }
        Temporary::clearUp(place_.folder());
        const int error = temporary_.create(place_.folder(), isThere ? 0600 : 0666);
        return error == 0 ? FileTrouble() : FileTrouble::ofSystem(error);
    }

    FileTrouble closeDirect() {
        return systemCalls().close(direct_.take()) == 0 ? FileTrouble() : FileTrouble::ofCall();
    }

    bool ready() {
        return settle(takeOld()) && settle(makeReady());
    }

    // What is not held is looked at only now, as late as can be.
    FileTrouble takeOld() {
        if (isHeld_) {
            return {};
        }
        const FileTrouble trouble = old_.hold(place_, kShortWait);
        const bool mayGoOn = !trouble || trouble.kind == FileTrouble::inUse;
        return mayGoOn ? checkNames() : trouble;
    }

    // The length is looked at because a disk may lose what it took.
    FileTrouble makeReady() {
        struct stat status;
        if (systemCalls().status(temporary_.file(), &status) != 0) {
            return FileTrouble::ofCall();
        }
        if (status.st_size != written_) {
            return FileTrouble::ofSystem(EIO);
        }
        losses_ = 0;
        isInPlace_ = old_.isOpen() && old_.status().st_nlink > 1;
        const int error = old_.isOpen() && !isInPlace_ ? giveAttributes() : 0;
        if (error != 0) {
            return FileTrouble::ofSystem(error);
        }
        const bool isFlushed = !toDisk_ || systemCalls().sync(temporary_.file()) == 0;
        return isFlushed ? FileTrouble() : FileTrouble::ofCall();
    }

    int giveAttributes() {
        const Attributes attributes(old_.file(), old_.status());
        const int error = attributes.giveTo(temporary_.file(), losses_);
        isInPlace_ = (losses_ & Attributes::owner) != 0 && attributes.locksOutOwner();
        losses_ = isInPlace_ ? 0 : losses_;
        return error;
    }

    FileTrouble replace() {
        FileTrouble trouble = checkPlace();
        for (int i = 0; trouble.kind == FileTrouble::changed && !isHeld_ && i < kMostChanges; ++i) {
            trouble = ready() ? checkPlace() : trouble_;
        }
        if (!trouble) {
            trouble = placeCopy();
        }
        if (trouble) {
            return trouble;
        }
        trouble = isInPlace_ ? writeInPlace(place_, old_, temporary_.file(), beside_) : rename();
        if (!trouble && toDisk_) {
            flushFolder(place_.folder());
        }
        return trouble;
    }

    // Whether there still stands what stood there.
    FileTrouble checkPlace() {
        if (const FileTrouble trouble = place_.look()) {
            return trouble;
        }
        const bool isFile = place_.kind() == Place::Kind::file;
        const bool isNothing = place_.kind() == Place::Kind::nothing;
        const bool isSame = old_.isOpen()
                                ? isFile && (isHeld_ ? isUnchanged(old_.status(), place_.status())
                                                     : isSameFile(old_.status(), place_.status()))
                                : isNothing;
        return isSame ? FileTrouble() : FileTrouble{FileTrouble::changed, EBUSY};
    }

    FileTrouble rename() {
        int error = temporary_.close();
        if (error == 0) {
            error = temporary_.become(place_.name(), isHeld_ && !old_.isOpen());
        }
        if (error == EEXIST) {
            return {FileTrouble::changed, EBUSY};
        }
        return error == 0 ? FileTrouble() : FileTrouble::ofSystem(error);
    }

    // The copy stands beside its place until the new contents take theirs.
    FileTrouble copyFor(const char* path) {
        copy_.remove();
        if (const FileTrouble trouble = copyPlace_.find(path, false)) {
            return trouble;
        }
        const int error = fill(copy_, copyPlace_.folder());
        if (error != 0) {
            copy_.remove();
        }
        return error == 0 ? FileTrouble() : FileTrouble::ofSystem(error);
    }

    FileTrouble placeCopy() {
        if (!copy_.isThere()) {
            return {};
        }
        if (const int error = copy_.become(copyPlace_.name(), false)) {
            return FileTrouble::ofSystem(error);
        }
        flushFolder(copyPlace_.folder());
        return {};
    }

    // Nobody else can read the copy before it has the attributes of what it is a copy of.
    int fill(Temporary& copy, int folder) const {
        if (const int error = copy.create(folder, 0600)) {
            return error;
        }
        off_t size = 0;
        if (const int error = copyAll(old_.file(), copy.file(), size)) {
            return error;
        }
        unsigned losses = 0;
        if (const int error = Attributes(old_.file(), old_.status()).giveTo(copy.file(), losses)) {
            return error;
        }
        return systemCalls().sync(copy.file()) == 0 ? copy.close() : errno;
    }

    const bool toDisk_;
    bool isFound_ = false;
    bool isHeld_ = false;
    bool isRefused_ = false;  // what was to be held
    bool isGivenUp_ = false;
    bool isOpen_ = false;
    bool isReady_ = false;
    bool isInPlace_ = false;
    FileTrouble trouble_;
    Place place_;
    HeldFile old_;
    Temporary temporary_;
    Place copyPlace_;
    Temporary copy_;  // of the old contents
    Descriptor direct_;
    off_t written_ = 0;
    [[maybe_unused]] off_t begun_ = 0;  // to be written to the disk
    unsigned losses_ = 0;
    std::string beside_;
};

FileReplacement::FileReplacement(bool toDisk) : steps_(std::make_unique<Steps>(toDisk)) {}
FileReplacement::~FileReplacement() = default;

bool FileReplacement::find(const char* path) {
    return steps_->find(path);
}

bool FileReplacement::isWrittenDirectly() const {
    return steps_->isDirect();
}

bool FileReplacement::hold(unsigned milliseconds) {
    return steps_->hold(milliseconds);
}

bool FileReplacement::backUp(const char* path) {
    return steps_->backUp(path);
}

bool FileReplacement::open() {
    return steps_->open();
}

bool FileReplacement::write(std::string_view text) {
    return steps_->write(text);
}

bool FileReplacement::complete() {
    return steps_->complete();
}

unsigned FileReplacement::losses() const {
    return steps_->losses();
}

bool FileReplacement::commit() {
    return steps_->commit();
}

void FileReplacement::giveUp() {
    steps_->giveUp();
}

FileReplacement::eTrouble FileReplacement::trouble() const {
    return static_cast<eTrouble>(steps_->trouble().kind);
}

int FileReplacement::error() const {
    return steps_->trouble().error;
}

const char* FileReplacement::oldBeside() const {
    return steps_->oldBeside();
}
