#include <vekdb/host/file_replacement.h>

#include "testing/failing_calls.h"
#include "testing/temp_dir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

using testing_support::FailingCalls;
using testing_support::TempDir;
using Names = std::vector<std::string>;

constexpr uid_t alice = 2001;
constexpr uid_t bob = 2002;
constexpr gid_t secret = 3001;

class Replacing : public ::testing::Test {
protected:
    std::string path(const char* name) const { return folder.file(name).string(); }

    struct stat statusOf(const char* name) const {
        struct stat status = {};
        EXPECT_EQ(::lstat(path(name).c_str(), &status), 0) << name;
        return status;
    }

    unsigned modeOf(const char* name) const { return statusOf(name).st_mode & 07777; }

    // With all steps; what came of it.
    FileReplacement::eTrouble replace(const char* name, std::string_view text) const {
        FileReplacement file(false);
        if (file.find(path(name).c_str()) && file.open() && file.write(text)) file.commit();
        return file.trouble();
    }

    TempDir folder;
};

// Runs a check as another user, where the test may; as itself where not. Its answer.
bool asUser(uid_t user, gid_t group, const std::vector<gid_t>& groups,
            const std::function<bool()>& check) {
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isRoot = ::geteuid() == 0;
        const bool isReady = !isRoot || (::setgroups(groups.size(), groups.data()) == 0 &&
                                         ::setgid(group) == 0 && ::setuid(user) == 0);
        ::_exit(isReady && check() ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool isRoot() {
    return ::geteuid() == 0;
}

TEST_F(Replacing, WritesBytesAsTheyAreZerosToo) {
    const std::string_view text("a\0b\n\0", 5);
    EXPECT_EQ(replace("out", text), FileReplacement::eNone);
    EXPECT_EQ(folder.read("out"), text);
}

TEST_F(Replacing, GivenUpLeavesTheOldFileAndNothingBesideIt) {
    FileReplacement file;
    folder.write("out", "old");
    ASSERT_TRUE(file.find(path("out").c_str()) && file.open() && file.write("new"));
    EXPECT_EQ(folder.names().size(), 2u);
    file.giveUp();
    EXPECT_EQ(folder.names(), Names{"out"});
    EXPECT_FALSE(file.write("more"));
    EXPECT_FALSE(file.commit());
    EXPECT_EQ(folder.read("out"), "old");
}

TEST_F(Replacing, GivenUpWhenItWasReadyMayBeginAnew) {
    FileReplacement file;
    folder.write("out", "old");
    std::filesystem::permissions(path("out"), std::filesystem::perms(0640));
    ASSERT_TRUE(file.find(path("out").c_str()) && file.hold(0));
    ASSERT_TRUE(file.open() && file.write("a long first one") && file.complete());
    file.giveUp();
    EXPECT_EQ(folder.read("out"), "old");
    ASSERT_TRUE(file.open() && file.write("new") && file.complete() && file.commit());
    EXPECT_EQ(folder.read("out"), "new");
    EXPECT_EQ(folder.names(), Names{"out"});
    EXPECT_EQ(std::filesystem::status(path("out")).permissions(), std::filesystem::perms(0640));
}

// A disk may have been full the first time.
TEST_F(Replacing, WhateverFailedMayBeginAnewOnceGivenUp) {
    bool fired = true;
    for (unsigned n = 1; fired; ++n) {
        folder.write("out", "old");
        FileReplacement file;
        ASSERT_TRUE(file.find(path("out").c_str()) && file.hold(0));
        const auto save = [&] {
            return file.open() && file.write("new") && file.complete() && file.commit();
        };
        bool isSaved = false;
        {
            FailingCalls calls(n, ENOSPC);
            isSaved = save();
            fired = calls.fired();
        }
        if (isSaved) continue;
        EXPECT_FALSE(file.open()) << n;
        file.giveUp();
        EXPECT_EQ(file.trouble(), FileReplacement::eSystem) << n;
        EXPECT_TRUE(save()) << n;
        EXPECT_EQ(folder.read("out"), "new") << n;
        EXPECT_EQ(folder.names(), Names{"out"}) << n;
    }
}

TEST_F(Replacing, WhatWasRefusedIsNotBegunAnewByGivingItUp) {
    folder.write("out", "old");
    FileReplacement first;
    ASSERT_TRUE(first.find(path("out").c_str()) && first.hold(0));
    FileReplacement second;
    ASSERT_TRUE(second.find(path("out").c_str()));
    ASSERT_FALSE(second.hold(0));
    second.giveUp();
    EXPECT_FALSE(second.open());
    EXPECT_EQ(second.trouble(), FileReplacement::eInUse);
    FileReplacement missing;
    ASSERT_FALSE(missing.find(path("none/out").c_str()));
    missing.giveUp();
    EXPECT_FALSE(missing.open());
}

TEST_F(Replacing, ADiskThatLosesWhatItTookIsSeenBeforeTheOldFileGoes) {
    folder.write("out", "old");
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().write = [](int, const void*, std::size_t size) {
        return static_cast<ssize_t>(size);
    };
    EXPECT_EQ(replace("out", "new"), FileReplacement::eSystem);
    FileIO::systemCalls() = before;
    EXPECT_EQ(folder.read("out"), "old");
    EXPECT_EQ(folder.names(), Names{"out"});
}

TEST_F(Replacing, ANameOfAnyBytesIsThatName) {
    EXPECT_EQ(replace("caf\xE9", "x"), FileReplacement::eNone);
    EXPECT_EQ(replace("\x01name", "x"), FileReplacement::eNone);
    EXPECT_EQ(folder.names(), (Names{"\x01name", "caf\xE9"}));
}

TEST_F(Replacing, AFolderIsEnteredOnceWhateverItHoldsOfItsOwnName) {
    std::filesystem::create_directories(path("a"));
    std::filesystem::create_directories(path("elsewhere"));
    std::filesystem::create_symlink(path("elsewhere"), path("a/a"));
    EXPECT_EQ(replace("a/out", "text"), FileReplacement::eNone);
    EXPECT_EQ(folder.read("a/out"), "text");
    EXPECT_FALSE(std::filesystem::exists(path("elsewhere/out")));
}

TEST_F(Replacing, AHeldFileIsNotHeldASecondTime) {
    folder.write("out", "old");
    FileReplacement first;
    ASSERT_TRUE(first.find(path("out").c_str()) && first.hold(0));
    FileReplacement second;
    ASSERT_TRUE(second.find(path("out").c_str()));
    EXPECT_FALSE(second.hold(20));
    EXPECT_EQ(second.trouble(), FileReplacement::eInUse);
}

TEST_F(Replacing, WhoWaitedHoldsTheFileThatTookThePlace) {
    folder.write("out", "old");
    FileReplacement second;
    ASSERT_TRUE(second.find(path("out").c_str()));
    std::thread waiting;
    bool isHeld = false;
    {
        FileReplacement first;
        ASSERT_TRUE(first.find(path("out").c_str()) && first.hold(0) && first.open());
        waiting = std::thread([&] { isHeld = second.hold(20000); });
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        EXPECT_TRUE(first.write("first") && first.commit());
    }
    waiting.join();
    EXPECT_TRUE(isHeld && second.open() && second.write("second") && second.commit());
    EXPECT_EQ(folder.read("out"), "second");
}

TEST_F(Replacing, TheLockGoesWithTheProcessHoweverItEnds) {
    folder.write("out", "old");
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        FileReplacement file;
        const bool isHeld = file.find(path("out").c_str()) && file.hold(0);
        [[maybe_unused]] const ssize_t told = ::write(ready[1], isHeld ? "y" : "n", 1);
        ::pause();
    }
    char answer = 0;
    ASSERT_EQ(::read(ready[0], &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
    FileReplacement file;
    ASSERT_TRUE(file.find(path("out").c_str()));
    EXPECT_FALSE(file.hold(0));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(file.hold(1000));
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST_F(Replacing, AHeldFileThatChangedAllTheSameIsLeftAlone) {
    const std::vector<std::function<void()>> changes = {
        [&] { folder.write("out", "longer than before"); },
        [&] { folder.write("out", "OLD"); },
        [&] { EXPECT_EQ(::unlink(path("out").c_str()), 0); },
        [&] {
            folder.write("other", "old");
            EXPECT_EQ(::rename(path("other").c_str(), path("out").c_str()), 0);
        },
    };
    const std::string longest = std::string(1000, 'x');
    for (std::size_t i = 0; i < 2 * changes.size(); ++i) {
        folder.write("out", "old");
        FileReplacement file;
        ASSERT_TRUE(file.find(path("out").c_str()) && file.hold(0));
        // Before the new contents are begun, and after they are complete.
        const bool isLate = i % 2 == 1;
        EXPECT_TRUE(!isLate || (file.open() && file.write(longest) && file.complete()));
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        changes[i / 2]();
        const bool isThere = std::filesystem::exists(folder.file("out"));
        EXPECT_FALSE((isLate || (file.open() && file.write(longest))) && file.commit());
        EXPECT_EQ(file.trouble(), FileReplacement::eChanged);
        EXPECT_TRUE(!isThere || folder.read("out").size() < longest.size());
        EXPECT_EQ(folder.names().size(), isThere ? 1u : 0u);
    }
}

TEST_F(Replacing, WithoutLocksTheComparisonAloneHolds) {
    folder.write("out", "old");
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().lock = [](int, int) {
        errno = ENOLCK;
        return -1;
    };
    FileReplacement first;
    FileReplacement second;
    EXPECT_TRUE(first.find(path("out").c_str()) && first.hold(0) && first.open());
    EXPECT_TRUE(second.find(path("out").c_str()) && second.hold(0) && second.open());
    EXPECT_TRUE(first.write("first") && first.commit());
    EXPECT_TRUE(second.write("second"));
    EXPECT_FALSE(second.commit());
    EXPECT_EQ(second.trouble(), FileReplacement::eChanged);
    FileIO::systemCalls() = before;
    EXPECT_EQ(folder.read("out"), "first");
    EXPECT_EQ(folder.names(), Names{"out"});
}

TEST_F(Replacing, AFileWithFurtherNamesKeepsThem) {
    folder.write("out", "old text");
    ASSERT_EQ(::link(path("out").c_str(), path("second").c_str()), 0);
    EXPECT_EQ(replace("out", "new"), FileReplacement::eNone);
    EXPECT_EQ(folder.read("second"), "new");
    EXPECT_EQ(statusOf("out").st_ino, statusOf("second").st_ino);
    EXPECT_EQ(folder.names(), (Names{"out", "second"}));
}

TEST_F(Replacing, WritingInPlaceKeepsTheOldBytesWhicheverCallFails) {
    const auto descriptors = testing_support::openDescriptors();
    bool fired = true;
    for (unsigned n = 1; fired; ++n) {
        folder.write("out", "old text");
        ASSERT_EQ(::link(path("out").c_str(), path("second").c_str()), 0);
        bool isSaved = false;
        {
            FailingCalls calls(n);
            isSaved = replace("out", "new") == FileReplacement::eNone;
            fired = calls.fired();
        }
        EXPECT_EQ(folder.read("out"), isSaved ? "new" : "old text") << n;
        EXPECT_EQ(folder.read("second"), isSaved ? "new" : "old text") << n;
        EXPECT_EQ(testing_support::openDescriptors(), descriptors) << n;
        // A name that the system does not take away stays, and nothing else does.
        for (const std::string& name : folder.names()) ::unlink(path(name.c_str()).c_str());
    }
}

TEST_F(Replacing, WhatCannotBePutBackStandsBeside) {
    folder.write("out", "old text");
    ASSERT_EQ(::link(path("out").c_str(), path("second").c_str()), 0);
    FileReplacement file(false);
    ASSERT_TRUE(file.find(path("out").c_str()) && file.open() && file.write("new"));
    ASSERT_TRUE(file.complete());
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().cut = [](int, off_t) {
        errno = EIO;
        return -1;
    };
    EXPECT_FALSE(file.commit());
    FileIO::systemCalls() = before;
    EXPECT_EQ(file.trouble(), FileReplacement::eOldBeside);
    ASSERT_NE(file.oldBeside(), nullptr);
    EXPECT_EQ(folder.read(file.oldBeside()), "old text");
    EXPECT_EQ(folder.names().size(), 3u);
    file.giveUp();
    EXPECT_FALSE(file.open());
}

TEST_F(Replacing, LeftOversOfKilledProcessesGoAndNothingElse) {
    const std::string living = ".vekdb-00000001-0000000000000001-00000001";
    const Names others = {".vekdb-", ".vekdb-00000001-0000000000000001-0000000",
                          ".vekdb-00000001-0000000000000001-000000011",
                          ".vekdb-0000000G-0000000000000001-00000001",
                          "out.old-00000001-0000000000000001-00000001"};
    for (const std::string& name : others) folder.write(name, "somebody's");
    folder.write("out", "old");
    const pid_t child = ::fork();
    if (child == 0) {
        FileReplacement file;
        if (file.find(path("out").c_str()) && file.open() && file.write("half")) ::raise(SIGKILL);
        ::_exit(1);
    }
    ::waitpid(child, nullptr, 0);
    EXPECT_EQ(folder.names().size(), others.size() + 2);
    folder.write(living, "half");
    const int lock = ::open(path(living.c_str()).c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    EXPECT_EQ(replace("out", "new"), FileReplacement::eNone);
    EXPECT_EQ(folder.names().size(), others.size() + 2);
    EXPECT_EQ(folder.read(living), "half");
    for (const std::string& name : others) EXPECT_EQ(folder.read(name), "somebody's");
    ::close(lock);
    EXPECT_EQ(replace("out", "newer"), FileReplacement::eNone);
    EXPECT_EQ(folder.names().size(), others.size() + 1);
}

TEST_F(Replacing, TwoSavesAtATimeLeaveEachOthersTemporariesAlone) {
    FileReplacement first;
    FileReplacement second;
    ASSERT_TRUE(first.find(path("a").c_str()) && first.open() && first.write("a"));
    ASSERT_TRUE(second.find(path("b").c_str()) && second.open() && second.write("b"));
    EXPECT_TRUE(first.commit() && second.commit());
    EXPECT_EQ(folder.names(), (Names{"a", "b"}));
}

TEST_F(Replacing, ExtendedAttributesAreKept) {
    folder.write("out", "old");
    const bool hasAny = ::setxattr(path("out").c_str(), "user.reel", "A001", 4, 0) == 0;
    EXPECT_EQ(replace("out", "new"), FileReplacement::eNone);
    char value[8] = "";
    const ssize_t size = ::getxattr(path("out").c_str(), "user.reel", value, sizeof value);
    EXPECT_EQ(size, hasAny ? 4 : -1);
    EXPECT_STREQ(value, hasAny ? "A001" : "");
}

// An access list as the system stores it: a version, and entries of tag, rights and number.
std::string accessList(uid_t reader) {
    std::string list("\2\0\0\0", 4);
    const auto add = [&](std::uint16_t tag, std::uint16_t rights, std::uint32_t number) {
        list.append(reinterpret_cast<const char*>(&tag), 2);
        list.append(reinterpret_cast<const char*>(&rights), 2);
        list.append(reinterpret_cast<const char*>(&number), 4);
    };
    add(1, 6, 0xFFFFFFFF);
    add(2, 4, reader);
    add(4, 0, 0xFFFFFFFF);
    add(0x10, 4, 0xFFFFFFFF);
    add(0x20, 0, 0xFFFFFFFF);
    return list;
}

constexpr const char* listName = "system.posix_acl_access";

bool giveList(const std::string& path) {
    const std::string list = accessList(alice);
    return ::setxattr(path.c_str(), listName, list.data(), list.size(), 0) == 0;
}

TEST_F(Replacing, TheAccessListIsKept) {
    folder.write("out", "old");
    const bool hasList = giveList(path("out"));
    const unsigned mode = modeOf("out");
    EXPECT_EQ(replace("out", "new"), FileReplacement::eNone);
    char value[64];
    const ssize_t size = ::getxattr(path("out").c_str(), listName, value, sizeof value);
    EXPECT_EQ(size > 0 ? std::string(value, static_cast<std::size_t>(size)) : "",
              hasList ? accessList(alice) : "");
    EXPECT_EQ(modeOf("out"), mode);
}

TEST_F(Replacing, WhereTheAccessListIsLostNobodyElseHasAccess) {
    folder.write("out", "old");
    const bool hasList = giveList(path("out"));
    const unsigned mode = modeOf("out");
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().setAttribute = [](int, const char*, const void*, std::size_t) {
        errno = EOPNOTSUPP;
        return -1;
    };
    FileReplacement file(false);
    EXPECT_TRUE(file.find(path("out").c_str()) && file.open() && file.write("new"));
    EXPECT_TRUE(file.complete());
    EXPECT_EQ(folder.read("out"), "old");
    EXPECT_EQ(file.losses() & FileReplacement::eAccessList,
              hasList ? unsigned{FileReplacement::eAccessList} : 0u);
    EXPECT_TRUE(file.commit());
    FileIO::systemCalls() = before;
    EXPECT_EQ(modeOf("out"), hasList ? 0600 : mode);
}

// A folder whose new files are for a group does not make a private file one of them.
TEST_F(Replacing, AListOfTheFolderGivesNoAccessToAnOldFile) {
    folder.write("out", "old");
    ASSERT_EQ(::chmod(path("out").c_str(), 0660), 0);
    const std::string list = accessList(bob);
    ::setxattr(folder.path().c_str(), "system.posix_acl_default", list.data(), list.size(), 0);
    EXPECT_EQ(replace("out", "new"), FileReplacement::eNone);
    EXPECT_EQ(::getxattr(path("out").c_str(), listName, nullptr, 0), -1);
    EXPECT_EQ(modeOf("out"), 0660u);
}

// Makes the calls fail that give a file away, as they do for all but the superuser.
class NothingIsGivenAway {
public:
    explicit NothingIsGivenAway(bool groupsAreKept) : before_(FileIO::systemCalls()) {
        keepsGroups = groupsAreKept;
        FileIO::systemCalls().setOwner = [](int file, uid_t owner, gid_t group) {
            errno = EPERM;
            return owner == static_cast<uid_t>(-1) && keepsGroups ? ::fchown(file, owner, group)
                                                                  : -1;
        };
    }
    ~NothingIsGivenAway() { FileIO::systemCalls() = before_; }
    NothingIsGivenAway(const NothingIsGivenAway&) = delete;
    NothingIsGivenAway& operator=(const NothingIsGivenAway&) = delete;

private:
    static inline bool keepsGroups = false;
    FileIO::SystemCalls before_;
};

TEST_F(Replacing, WhereTheGroupIsLostItsOwnRightsAreToo) {
    const struct {
        unsigned before;
        unsigned after;
    } modes[] = {{0660, 0600}, {0664, 0644}, {0606, 0600}, {0666, 0666}, {0640, 0600}};
    for (const auto& mode : modes) {
        folder.write("out", "old");
        ASSERT_EQ(::chmod(path("out").c_str(), mode.before), 0);
        const NothingIsGivenAway calls(false);
        FileReplacement file(false);
        EXPECT_TRUE(file.find(path("out").c_str()) && file.open() && file.write("new"));
        EXPECT_TRUE(file.complete());
        EXPECT_EQ(file.losses(), unsigned{FileReplacement::eGroup});
        EXPECT_TRUE(file.commit());
        EXPECT_EQ(modeOf("out"), mode.after);
    }
}

// Of two groups, saved by one who is in the file's group but not its owner.
TEST_F(Replacing, AnOwnerWhoWouldLoseAccessStaysTheOwner) {
    folder.write("out", "old");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
    ASSERT_EQ(::chmod(path("out").c_str(), 0660), 0);
    const bool isGiven = ::chown(path("out").c_str(), alice, secret) == 0;
    const struct stat before = statusOf("out");
    EXPECT_TRUE(asUser(bob, bob, {secret},
                       [&] { return replace("out", "new") == FileReplacement::eNone; }));
    EXPECT_EQ(folder.read("out"), "new");
    EXPECT_EQ(statusOf("out").st_uid, before.st_uid);
    EXPECT_EQ(statusOf("out").st_gid, before.st_gid);
    EXPECT_EQ(modeOf("out"), 0660u);
    EXPECT_EQ(statusOf("out").st_ino == before.st_ino, isGiven);
    EXPECT_EQ(folder.names(), Names{"out"});
}

TEST_F(Replacing, WhereTheOwnerLosesNothingTheGroupAloneIsKept) {
    folder.write("out", "old");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
    ASSERT_EQ(::chmod(path("out").c_str(), 0666), 0);
    ASSERT_EQ(::chown(path("out").c_str(), isRoot() ? alice : ::geteuid(),
                      isRoot() ? secret : ::getegid()),
              0);
    const struct stat before = statusOf("out");
    EXPECT_TRUE(asUser(bob, bob, {secret},
                       [&] { return replace("out", "new") == FileReplacement::eNone; }));
    EXPECT_EQ(statusOf("out").st_uid, isRoot() ? bob : before.st_uid);
    EXPECT_EQ(statusOf("out").st_gid, before.st_gid);
    EXPECT_EQ(modeOf("out"), 0666u);
}

TEST_F(Replacing, LinksOfOthersInStickyAndForeignFoldersAreNotFollowed) {
    const struct {
        const char* name;
        mode_t mode;
        uid_t owner;
        uid_t ownerOfLink;
        bool isFollowed;
    } folders[] = {
        {"sticky", 01777, 0, alice, false}, {"foreign", 0755, alice, alice, false},
        {"own", 0755, 0, alice, true},      {"stickyOwnLink", 01777, 0, 0, true},
        {"open", 0777, 0, alice, true},     {"foreignRootsLink", 0755, alice, 0, true},
    };
    for (const auto& entry : folders) {
        folder.write("target", "old");
        const std::string place = path(entry.name);
        const std::string link = place + "/out";
        ASSERT_EQ(::mkdir(place.c_str(), 0700), 0);
        ASSERT_EQ(::symlink("../target", link.c_str()), 0);
        const bool isGiven = ::lchown(link.c_str(), entry.ownerOfLink, 0) == 0 &&
                             ::chown(place.c_str(), entry.owner, 0) == 0;
        ASSERT_EQ(::chmod(place.c_str(), entry.mode), 0);
        const bool follows = entry.isFollowed || !isGiven;
        EXPECT_EQ(replace((std::string(entry.name) + "/out").c_str(), "new"),
                  follows ? FileReplacement::eNone : FileReplacement::eForeignLink)
            << entry.name;
        EXPECT_EQ(folder.read("target"), follows ? "new" : "old") << entry.name;
    }
}

// A folder of the path may be such a link, too.
TEST_F(Replacing, LinksOfOthersOnTheWayAreNotFollowed) {
    ASSERT_EQ(::mkdir(path("there").c_str(), 0700), 0);
    ASSERT_EQ(::mkdir(path("shared").c_str(), 0700), 0);
    ASSERT_EQ(::symlink("../there", path("shared/way").c_str()), 0);
    const bool isGiven = ::lchown(path("shared/way").c_str(), alice, 0) == 0;
    ASSERT_EQ(::chmod(path("shared").c_str(), 01777), 0);
    EXPECT_EQ(replace("shared/way/out", "new"),
              isGiven ? FileReplacement::eForeignLink : FileReplacement::eNone);
    EXPECT_EQ(std::filesystem::exists(folder.file("there/out")), !isGiven);
}

TEST_F(Replacing, AFileOfAnotherThatSomebodyGaveASecondNameIsNotOverwritten) {
    folder.write("secret", "old");
    ASSERT_EQ(::mkdir(path("home").c_str(), 0755), 0);
    ASSERT_EQ(::link(path("secret").c_str(), path("home/out").c_str()), 0);
    const bool isGiven = ::chown(path("home").c_str(), alice, 0) == 0;
    EXPECT_EQ(replace("home/out", "new"),
              isGiven ? FileReplacement::eForeignName : FileReplacement::eNone);
    EXPECT_EQ(folder.read("secret"), isGiven ? "old" : "new");
}

// The folder that was found is the one that is written to, whatever its name leads to later.
TEST_F(Replacing, AFolderThatIsExchangedMeanwhileLeadsNowhere) {
    ASSERT_EQ(::mkdir(path("home").c_str(), 0700), 0);
    ASSERT_EQ(::mkdir(path("elsewhere").c_str(), 0700), 0);
    folder.write("home/out", "old");
    FileReplacement file(false);
    ASSERT_TRUE(file.find(path("home/out").c_str()) && file.open() && file.write("new"));
    ASSERT_EQ(::rename(path("home").c_str(), path("before").c_str()), 0);
    ASSERT_EQ(::symlink("elsewhere", path("home").c_str()), 0);
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(folder.read("before/out"), "new");
    EXPECT_TRUE(std::filesystem::is_empty(folder.file("elsewhere")));
}

TEST_F(Replacing, ALinkThatTakesTheFilesPlaceMeanwhileIsNotFollowed) {
    folder.write("out", "old");
    folder.write("target", "untouched");
    FileReplacement file(false);
    ASSERT_TRUE(file.find(path("out").c_str()) && file.open() && file.write("new"));
    ASSERT_EQ(::unlink(path("out").c_str()), 0);
    ASSERT_EQ(::symlink("target", path("out").c_str()), 0);
    EXPECT_FALSE(file.commit());
    EXPECT_EQ(folder.read("target"), "untouched");
    EXPECT_EQ(folder.names(), (Names{"out", "target"}));
}

// A pipe that waits under the name is written to as it is; what is put in its place is not, be it a
// link or a file.
TEST_F(Replacing, WhatTakesAPipesPlaceMeanwhileIsNotWrittenTo) {
    const std::string out = path("out");
    for (const bool isLink : {true, false}) {
        folder.write("target", "untouched");
        ASSERT_EQ(::mkfifo(out.c_str(), 0600), 0);
        FileReplacement file(false);
        ASSERT_TRUE(file.find(out.c_str()) && file.isWrittenDirectly());
        ASSERT_EQ(::unlink(out.c_str()), 0);
        const int put =
            isLink ? ::symlink("target", out.c_str()) : ::link(path("target").c_str(), out.c_str());
        ASSERT_EQ(put, 0);
        EXPECT_FALSE(file.open() && file.write("new") && file.commit()) << isLink;
        EXPECT_EQ(folder.read("target"), "untouched") << isLink;
        ASSERT_EQ(::unlink(out.c_str()), 0);
    }
}

// Who listens there would be given the text, or keep the writer waiting for ever.
TEST_F(Replacing, PipesOfOthersInStickyFoldersAreNotWrittenTo) {
    const struct {
        const char* name;
        mode_t mode;
        uid_t owner;  // of the folder
        uid_t ownerOfPipe;
        bool isWritten;
    } folders[] = {{"sticky", 01777, 0, alice, false},
                   {"stickyOwnPipe", 01777, 0, 0, true},
                   {"ofItsOwner", 01777, alice, alice, true},
                   {"foreign", 0755, alice, alice, true},
                   {"open", 0777, 0, alice, true}};
    for (const auto& entry : folders) {
        const std::string place = path(entry.name);
        const std::string pipe = place + "/out";
        ASSERT_EQ(::mkdir(place.c_str(), 0700), 0);
        ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
        const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        const bool isGiven = ::chown(pipe.c_str(), entry.ownerOfPipe, 0) == 0 &&
                             ::chown(place.c_str(), entry.owner, 0) == 0;
        ASSERT_EQ(::chmod(place.c_str(), entry.mode), 0);
        const bool isWritten = entry.isWritten || !isGiven;
        EXPECT_EQ(replace((std::string(entry.name) + "/out").c_str(), "new"),
                  isWritten ? FileReplacement::eNone : FileReplacement::eSystem)
            << entry.name;
        char text[8];
        EXPECT_EQ(::read(reader, text, sizeof text), isWritten ? 3 : 0) << entry.name;
        ::close(reader);
    }
}

// Of two that make a new file of one name the second one is told, however late the first came.
TEST_F(Replacing, WhatIsToBeNewTakesNoPlaceThatWasTakenMeanwhile) {
    static std::string taken;
    taken = path("out");
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileReplacement file(false);
    ASSERT_TRUE(file.find(taken.c_str()) && file.hold(0) && file.open() && file.write("new"));
    ASSERT_TRUE(file.complete());
    // The last call before the name is given.
    FileIO::systemCalls().close = [](int closed) {
        ::close(::open(taken.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600));
        return ::close(closed);
    };
    EXPECT_FALSE(file.commit());
    FileIO::systemCalls() = before;
    EXPECT_EQ(file.trouble(), FileReplacement::eChanged);
    EXPECT_EQ(folder.read("out"), "");
    EXPECT_EQ(folder.names(), (Names{"out"}));
}

// The owner that a new file gets is that of the file it takes the place of.
TEST_F(Replacing, AFileThatTakesThePlaceMeanwhileGivesItsOwnOwnerAndMode) {
    folder.write("out", "old");
    [[maybe_unused]] const int given = ::chown(path("out").c_str(), alice, secret);
    folder.write("other", "other");
    ASSERT_EQ(::chmod(path("other").c_str(), 0600), 0);
    FileReplacement file(false);
    ASSERT_TRUE(file.find(path("out").c_str()) && file.open() && file.write("new"));
    ASSERT_TRUE(file.complete());
    ASSERT_EQ(::rename(path("other").c_str(), path("out").c_str()), 0);
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(statusOf("out").st_uid, ::geteuid());
    EXPECT_EQ(modeOf("out"), 0600u);
}

TEST_F(Replacing, ADescriptorOfTheProcessIsWrittenToWhereItStands) {
    folder.write("out", "before\n");
    const int file = ::open(path("out").c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(::lseek(file, 0, SEEK_END), 7);
    FileReplacement replacement;
    ASSERT_TRUE(replacement.find(("/dev/fd/" + std::to_string(file)).c_str()));
    EXPECT_TRUE(replacement.isWrittenDirectly());
    EXPECT_TRUE(replacement.open() && replacement.write("new\n") && replacement.commit());
    EXPECT_EQ(::write(file, "tail\n", 5), 5);
    ::close(file);
    EXPECT_EQ(folder.read("out"), "before\nnew\ntail\n");
}

class BackingUp : public Replacing {
protected:
    BackingUp() { folder.write("log", "the log"); }

    bool prepare(FileReplacement& file) {
        return file.find(path("log").c_str()) && file.hold(0) &&
               file.backUp(path("log.bak").c_str()) && file.open() && file.write("new") &&
               file.complete();
    }

    bool backUp() {
        FileReplacement file;
        return prepare(file) && file.commit();
    }
};

TEST_F(BackingUp, ReplacesAnOlderCopyAndKeepsTheMode) {
    folder.write("log.bak", "older");
    ASSERT_EQ(::chmod(path("log").c_str(), 0640), 0);
    EXPECT_TRUE(backUp());
    EXPECT_EQ(folder.read("log.bak"), "the log");
    EXPECT_EQ(modeOf("log.bak"), 0640u);
    EXPECT_EQ(folder.names(), (Names{"log", "log.bak"}));
}

TEST_F(BackingUp, LeavesTheOlderCopyWithoutACommit) {
    folder.write("log.bak", "older");
    for (const bool isGivenUp : {true, false}) {
        FileReplacement file;
        ASSERT_TRUE(prepare(file));
        EXPECT_EQ(folder.read("log.bak"), "older");
        if (isGivenUp) file.giveUp();
    }
    EXPECT_EQ(folder.read("log.bak"), "older");
    EXPECT_EQ(folder.names(), (Names{"log", "log.bak"}));
}

TEST_F(BackingUp, LeavesTheOlderCopyWhereTheFileWasChangedMeanwhile) {
    folder.write("log.bak", "older");
    FileReplacement file;
    ASSERT_TRUE(prepare(file));
    folder.write("log", "theirs, longer");
    EXPECT_FALSE(file.commit());
    EXPECT_EQ(folder.read("log.bak"), "older");
    EXPECT_EQ(folder.names(), (Names{"log", "log.bak"}));
}

TEST_F(BackingUp, RefusesAFolderInThePlaceOfTheCopyBeforeTheEnd) {
    std::filesystem::create_directory(path("log.bak"));
    FileReplacement file;
    EXPECT_FALSE(prepare(file));
    EXPECT_EQ(file.error(), EISDIR);
}

TEST_F(BackingUp, DoesNotFollowALinkThatStandsThere) {
    folder.write("target", "untouched");
    ASSERT_EQ(::symlink("target", path("log.bak").c_str()), 0);
    EXPECT_TRUE(backUp());
    EXPECT_EQ(folder.read("target"), "untouched");
    EXPECT_TRUE(S_ISREG(statusOf("log.bak").st_mode));
}

TEST_F(BackingUp, DoesNotWriteIntoAFileThatStandsThere) {
    folder.write("log.bak", "planted");
    const int planted = ::open(path("log.bak").c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_TRUE(backUp());
    char text[16] = "";
    EXPECT_EQ(::read(planted, text, sizeof text - 1), 7);
    EXPECT_STREQ(text, "planted");
    ::close(planted);
    EXPECT_EQ(statusOf("log.bak").st_uid, statusOf("log").st_uid);
}

TEST_F(BackingUp, AnyFailingCallLeavesTheOlderCopyOrTheNewOne) {
    bool fired = true;
    for (unsigned n = 1; fired; ++n) {
        folder.write("log", "the log");
        folder.write("log.bak", "older");
        bool isSaved = false;
        {
            FailingCalls calls(n, ENOSPC);
            isSaved = backUp();
            fired = calls.fired();
        }
        const bool isCopied = isSaved || folder.read("log.bak") == "the log";
        EXPECT_EQ(folder.read("log.bak"), isCopied ? "the log" : "older") << n;
        EXPECT_EQ(folder.read("log"), isSaved ? "new" : "the log") << n;
        EXPECT_EQ(folder.names(), (Names{"log", "log.bak"})) << n;
    }
}

}  // namespace
