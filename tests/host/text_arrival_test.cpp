#include "host/text_arrival.h"

#include <vekdb/host/text_file.h>
#include "host/posix/file_io.h"
#include "host/text_in_pieces.h"
#include "testing/arrival.h"
#include "testing/random.h"
#include "testing/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using testing_support::ArrivalOf;
using testing_support::Random;
using testing_support::ReadingAhead;
using testing_support::TempDir;

namespace {

class TextArrivals : public testing::Test {
protected:
    Quor::Ptr<TextArrival> begin(const std::string& text) {
        folder_.write("in", text);
        return TextArrival::begin(folder_.file("in").c_str());
    }

    // Waits for one piece after the other.
    static std::string whole(TextArrival& arrival) {
        std::string text;
        while (text.size() < arrival.text()->size()) {
            const std::size_t have = arrival.waitBeyond(text.size());
            text.append(arrival.text()->data() + text.size(), have - text.size());
        }
        return text;
    }

    TempDir folder_;
    ArrivalOf pieces_{7};
    ReadingAhead ahead_;
};

class TextsInTurn : public TextArrivals {
    ReadingAhead ahead_{false};
};

TEST_F(TextArrivals, AllOfTheTextComesInPieces) {
    Random random;
    for (int i = 0; i < 100; ++i) {
        const std::string text = "x" + random.bytes(100);
        const auto arrival = begin(text);
        ASSERT_TRUE(arrival);
        ASSERT_EQ(arrival->text()->size(), text.size());
        ASSERT_EQ(whole(*arrival), text);
        ASSERT_EQ(arrival->text()->data()[text.size()], '\0');
    }
}

TEST_F(TextArrivals, SmallFilesFoldersAndMissingFilesAreNotWaitedFor) {
    const ArrivalOf other(7, 10);
    EXPECT_FALSE(begin("123456789"));
    EXPECT_TRUE(begin("1234567890"));
    EXPECT_FALSE(TextArrival::begin(folder_.path().c_str()));
    EXPECT_FALSE(TextArrival::begin(folder_.file("missing").c_str()));
    EXPECT_FALSE(TextArrival::begin("/proc/self/status"));
}

TEST_F(TextArrivals, MayBeLetGoBeforeTheTextIsWhole) {
    const std::string text(100000, 'x');
    for (int i = 0; i < 20; ++i) {
        const auto arrival = begin(text);
        ASSERT_TRUE(arrival);
        EXPECT_GT(arrival->waitBeyond(0), 0u);
    }
}

TEST_F(TextArrivals, LeaveNoFileOpen) {
    const auto openFiles = [] {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return std::distance(std::filesystem::begin(files), std::filesystem::end(files));
    };
    const auto before = openFiles();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(whole(*begin("some text")), "some text");
        EXPECT_GT(begin(std::string(100, 'x'))->waitBeyond(0), 0u);
    }
    EXPECT_EQ(openFiles(), before);
}

TEST_F(TextArrivals, FilesLargerThanTheMemoryAreNotWaitedFor) {
    folder_.write("large", "x");
    const std::string path = folder_.file("large");
    ASSERT_EQ(0, ::truncate(path.c_str(), static_cast<off_t>(FileIO::memorySize() + 1)));
    EXPECT_FALSE(TextArrival::begin(path.c_str()));
}

// What the system reads in place of the file takes a while and cannot be called off.
TEST_F(TextArrivals, AreNotGoneBeforeTheSystemHasWrittenItsLast) {
    constexpr std::size_t size = std::size_t{64} << 20;
    const ArrivalOf onePiece(size);
    static int zeros;
    zeros = ::open("/dev/zero", O_RDONLY | O_CLOEXEC);
    folder_.write("in", "x");
    ASSERT_EQ(0, ::truncate(folder_.file("in").c_str(), size));
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().beginRead = [](aiocb* piece) {
        static_cast<volatile char*>(piece->aio_buf)[piece->aio_nbytes - 1] = 'x';
        piece->aio_fildes = zeros;
        return ::aio_read(piece);
    };
    auto arrival = TextArrival::begin(folder_.file("in").c_str());
    FileIO::systemCalls() = before;
    ASSERT_TRUE(arrival);
    const Quor::Ptr<TextBlock> text = arrival->text();
    arrival.reset();
    EXPECT_EQ(text->data()[size - 1], '\0');
    ::close(zeros);
}

// The system's reading ahead, whose third piece comes as a test likes.
class ThirdPiece {
public:
    explicit ThirdPiece(ssize_t (*end)(aiocb*)) : before_(FileIO::systemCalls()) {
        pieces_ = 0;
        other_ = end;
        FileIO::systemCalls().endRead = [](aiocb* piece) {
            const ssize_t got = ::aio_return(piece);
            return ++pieces_ == 3 ? other_(piece) : got;
        };
    }
    ThirdPiece(const ThirdPiece&) = delete;
    ThirdPiece& operator=(const ThirdPiece&) = delete;
    ~ThirdPiece() { FileIO::systemCalls() = before_; }

private:
    static inline int pieces_ = 0;
    static inline ssize_t (*other_)(aiocb*) = nullptr;
    FileIO::SystemCalls before_;
};

TEST_F(TextArrivals, ATextThatCannotBeReadOnIsBroken) {
    const ThirdPiece failing([](aiocb*) { return ssize_t{-1}; });
    const auto arrival = begin(std::string(100, 'x'));
    EXPECT_THROW(whole(*arrival), TextArrival::Broken);
}

TEST_F(TextArrivals, ATextShorterThanTheFileSaidIsBroken) {
    const ThirdPiece ending([](aiocb*) { return ssize_t{3}; });
    const auto arrival = begin(std::string(100, 'x'));
    EXPECT_THROW(whole(*arrival), TextArrival::Broken);
}

TEST_F(TextArrivals, ATextLongerThanTheFileSaidIsBroken) {
    const auto arrival = begin(std::string(100, 'x'));
    folder_.write("in", std::string(101, 'x'));
    EXPECT_THROW(whole(*arrival), TextArrival::Broken);
}

TEST_F(TextArrivals, WhatIsBrokenStaysSo) {
    const ThirdPiece failing([](aiocb*) { return ssize_t{-1}; });
    const auto arrival = begin(std::string(21, 'x'));
    EXPECT_THROW(whole(*arrival), TextArrival::Broken);
    EXPECT_THROW(arrival->waitBeyond(20), TextArrival::Broken);
}

TEST_F(TextArrivals, AnAskingThatTheSystemRefusesIsBroken) {
    static int asked;
    for (int refused = 1; refused < 15; ++refused) {
        asked = -refused;
        const FileIO::SystemCalls before = FileIO::systemCalls();
        FileIO::systemCalls().beginRead = [](aiocb* piece) {
            return ++asked == 0 ? -1 : ::aio_read(piece);
        };
        const auto arrival = begin(std::string(100, 'x'));
        FileIO::systemCalls().beginRead = ::aio_read;
        FileIO::systemCalls() = before;
        EXPECT_EQ(static_cast<bool>(arrival), refused > 8);
    }
}

// What a forked process makes of it, as its exit status; -1 where it does not end.
template <class Task>
int statusOfForked(Task task) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(20);
        ::_exit(task());
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(TextArrivals, AForkedProcessReadsInThePlainWay) {
    EXPECT_EQ(whole(*begin("some text")), "some text");
    const std::string path = folder_.file("in");
    EXPECT_EQ(0, statusOfForked([&] { return TextArrival::begin(path.c_str()) ? 1 : 0; }));
}

TEST_F(TextArrivals, AForkedProcessWaitsForNothingThatWasComing) {
    auto arrival = begin(std::string(1000, 'x'));
    arrival->waitBeyond(0);
    EXPECT_EQ(2, statusOfForked([&] {
                  int broken = 0;
                  try {
                      whole(*arrival);
                  } catch (const TextArrival::Broken&) {
                      broken = 2;
                  }
                  arrival.reset();
                  return broken;
              }));
    EXPECT_GT(arrival->waitBeyond(990), 990u);
}

TEST_F(TextsInTurn, ComeWholeInPiecesOfAnySize) {
    Random random;
    for (int i = 0; i < 100; ++i) {
        const std::string text = "x" + random.bytes(100);
        const auto arrival = begin(text);
        ASSERT_TRUE(arrival);
        ASSERT_EQ(whole(*arrival), text);
        ASSERT_EQ(arrival->text()->data()[text.size()], '\0');
    }
}

TEST_F(TextsInTurn, NeverAskTheSystemToReadAhead) {
    static int asked;
    asked = 0;
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().beginRead = [](aiocb* piece) {
        ++asked;
        return ::aio_read(piece);
    };
    EXPECT_EQ(whole(*begin(std::string(100, 'x'))), std::string(100, 'x'));
    const int inTurn = asked;
    const ReadingAhead ahead;
    EXPECT_EQ(whole(*begin(std::string(100, 'x'))), std::string(100, 'x'));
    FileIO::systemCalls() = before;
    EXPECT_EQ(inTurn, 0);
    EXPECT_EQ(asked, 15);
}

TEST_F(TextsInTurn, AreReadOnlyAsFarAsSomebodyAsks) {
    const auto arrival = begin(std::string(100, 'x'));
    EXPECT_EQ(arrival->waitBeyond(0), 7u);
    EXPECT_EQ(arrival->waitBeyond(6), 7u);
    EXPECT_EQ(arrival->waitBeyond(7), 14u);
}

TEST_F(TextsInTurn, GoOnAfterInterruptedAndShortReads) {
    static int calls;
    calls = 0;
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().readAt = [](int file, void* to, std::size_t size, off_t from) {
        if (++calls % 2 == 1) {
            errno = EINTR;
            return ssize_t{-1};
        }
        return ::pread(file, to, std::min<std::size_t>(size, 3), from);
    };
    const std::string text = whole(*begin("a text in small pieces"));
    FileIO::systemCalls() = before;
    EXPECT_EQ(text, "a text in small pieces");
}

TEST_F(TextsInTurn, OfAFileThatShrinksOrCannotBeReadOnAreBroken) {
    const auto shrunk = begin(std::string(100, 'x'));
    EXPECT_EQ(shrunk->waitBeyond(0), 7u);
    ASSERT_EQ(0, ::truncate(folder_.file("in").c_str(), 50));
    EXPECT_THROW(whole(*shrunk), TextArrival::Broken);

    const auto failing = begin(std::string(100, 'x'));
    const testing_support::BrokenPiece broken(3, true);
    EXPECT_THROW(whole(*failing), TextArrival::Broken);
}

// Writes over a file's bytes, at a later time than it was written at before.
void rewrite(const std::filesystem::path& path, const std::string& text) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(::write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    ::close(file);
}

TEST_F(TextArrivals, AFileRewrittenAtTheSameSizeIsBroken) {
    for (const bool isAhead : {false, true}) {
        const ReadingAhead ahead(isAhead);
        const auto arrival = begin(std::string(100, 'x'));
        EXPECT_GT(arrival->waitBeyond(0), 0u);
        rewrite(folder_.file("in"), std::string(100, 'y'));
        EXPECT_THROW(whole(*arrival), TextArrival::Broken) << isAhead;
    }
}

TEST_F(TextArrivals, AFileReplacedByAnotherIsReadOn) {
    for (const bool isAhead : {false, true}) {
        const ReadingAhead ahead(isAhead);
        const auto arrival = begin(std::string(100, 'x'));
        EXPECT_GT(arrival->waitBeyond(0), 0u);
        folder_.write("other", std::string(100, 'y'));
        std::filesystem::rename(folder_.file("other"), folder_.file("in"));
        EXPECT_EQ(whole(*arrival), std::string(100, 'x')) << isAhead;
    }
}

TEST_F(TextArrivals, AnOpenFileComesFromItsFirstByteAndKeepsItsPlace) {
    for (const bool isAhead : {false, true}) {
        const ReadingAhead ahead(isAhead);
        folder_.write("in", "some text");
        const FileIO::Descriptor file(FileIO::openToRead(folder_.file("in").c_str()));
        ASSERT_EQ(::lseek(file.get(), 4, SEEK_SET), 4);
        const auto arrival = TextArrival::begin(file.get());
        ASSERT_TRUE(arrival);
        EXPECT_EQ(whole(*arrival), "some text");
        EXPECT_EQ(::lseek(file.get(), 0, SEEK_CUR), 4);
    }
}

TEST_F(TextArrivals, AFileGivesTheLinesThatItGivesWhenItIsReadAtOnce) {
    Random random;
    for (int i = 0; i < 300; ++i) {
        folder_.write("in", "x" + random.text(std::string("ab\r\n\n\0", 6), 80));
        TextFile ahead;
        TextFile atOnce;
        ASSERT_TRUE(TextInPieces::beginLoad(ahead, folder_.widePath("in"), '\n'));
        ASSERT_TRUE(atOnce.load(folder_.widePath("in"), '\n', false));
        ASSERT_EQ(ahead.textSize(), atOnce.textSize());
        const auto asked = static_cast<unsigned>(random.below(8));
        ASSERT_EQ(ahead.line(asked), atOnce.line(asked));
        ASSERT_EQ(ahead.lineOffset(asked), atOnce.lineOffset(asked));
        ASSERT_EQ(ahead.size(), atOnce.size());
    }
}

TEST_F(TextArrivals, AFileThatIsStillComingCanBeAppendedToAndSaved) {
    folder_.write("in", std::string(50, 'a') + "\nb");
    TextFile file;
    ASSERT_TRUE(TextInPieces::beginLoad(file, folder_.widePath("in"), '\n'));
    file.appendLine("c");
    ASSERT_TRUE(file.save(folder_.widePath("out"), TextFile::eLF));
    EXPECT_EQ(folder_.read("out"), std::string(50, 'a') + "\nb\nc\n");
}

TEST_F(TextArrivals, AFileThatDoesNotComeAheadHasNoLines) {
    TextFile file;
    file.appendLine("old");
    EXPECT_FALSE(TextInPieces::beginLoad(file, folder_.widePath("missing"), '\n'));
    EXPECT_EQ(file.size(), 0u);
}

}  // namespace
