#pragma once

#include <memory>
#include <string_view>

#include <vekdb/host/visibility.h>

/// Puts new contents in a file's place, whole or not at all: they are written to a file of unique
/// name in the same folder, flushed to the disk, and renamed over the target. Until `commit`
/// answers true the old file stands as it was; whatever goes wrong, nothing is left beside it.
///
/// The path is looked up once, and its folder is held open from then on. Links are followed,
/// except those that somebody else put into a sticky folder or one of a third party. Owner, group,
/// mode, access list and extended attributes are kept where the system lets; what cannot be kept
/// is known before anything is lost, and access is never wider than it was.
///
/// A file that has further names, or whose owner would lose access to a new one, is written to in
/// place instead, with its old bytes in another file until that is done. A character device, a
/// FIFO and a descriptor of this process (/dev/stdout) are written to directly.
///
/// The steps are called in the order in which they stand here, each once and `write` as often as
/// needed; after a false the later ones do nothing and answer false. Used by one thread at a time;
/// may throw bad_alloc, and then the old file stands as well.
class VEKDB_PUBLIC FileReplacement {
public:
    /// Why a step failed.
    enum eTrouble : unsigned char {
        eNone,
        eSystem,       ///< what the system said, see error()
        eInUse,        ///< somebody else changes the file
        eChanged,      ///< it is not as it was when it was held
        eForeignLink,  ///< a link of somebody else's, where that may be a trap
        eForeignName,  ///< a file with further names, the same
        eOldBeside     ///< writing in place failed; the old bytes stand in oldBeside()
    };
    /// What the new file does not have of the old one.
    enum eLoss : unsigned { eOwner = 1, eGroup = 2, eAccessList = 4, eAttributes = 8 };

    /// With `toDisk` the new contents are on the disk before they take the old ones' place.
    explicit FileReplacement(bool toDisk = true);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Looks up a path, in the system's bytes. A file need not be there, its folder must.
    bool find(const char* path);
    /// Whether what was found takes text as it comes, and cannot be replaced.
    bool isWrittenDirectly() const;

    /// Keeps others who ask the same way from changing the file, until this or the process ends;
    /// waits at most so long. From then on the file must not change otherwise either: `commit`
    /// fails where it did. Where there is no file, or the file system has no locks, true.
    /// To be left out by who puts something new in the file's place without looking at the old.
    bool hold(unsigned milliseconds);
    /// Copies a file that is held; `commit` puts the copy at another path, before the new contents
    /// take their place. A link there is replaced and not followed. Who may read the copy may read
    /// the file. A failure leaves this replacement as it was, without a copy.
    bool backUp(const char* path);

    /// Makes the new file, empty, and appends to it.
    bool open();
    bool write(std::string_view text);
    /// Makes the new file ready to take the place, on the disk and with all that it keeps.
    bool complete();
    /// After complete: a sum of eLoss.
    unsigned losses() const;
    /// The new file takes the old one's place.
    bool commit();
    /// Instead of commit: the old file stays, nothing is left beside it, and `open` may come again.
    void giveUp();

    /// Of the step that answered false; eNone before.
    eTrouble trouble() const;
    /// errno of the call that failed.
    int error() const;
    /// The name, in the file's folder, of what is left of its old contents; null as a rule.
    const char* oldBeside() const;

private:
    class Steps;
    std::unique_ptr<Steps> steps_;
};
