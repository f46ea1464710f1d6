#include <vekdb/host/foreign_program.h>

#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

constexpr int lowest = 10;  // above every number that a program is handed one under
constexpr int signalled = 128;

// Calls again for as long as signals come in between.
template <class Call>
auto uninterrupted(Call call) {
    decltype(call()) got;
    do {
        got = call();
    } while (got < 0 && errno == EINTR);
    return got;
}

int movedUp(int file) {
    const int moved = ::fcntl(file, F_DUPFD_CLOEXEC, lowest);
    const int error = errno;
    ::close(file);
    errno = error;
    return moved;
}

// A file that never had a name, or where the system has none such, one that loses it at once.
int openScratch(const char* folder) {
    const int file = ::open(folder, O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (file >= 0 || (errno != EOPNOTSUPP && errno != EISDIR)) return file;
    char name[4096] = "";
    constexpr std::string_view ending = "/vek-XXXXXX";
    const std::string_view in(folder);
    if (in.size() + ending.size() >= sizeof name) return errno = ENAMETOOLONG, -1;
    in.copy(name, in.size());
    ending.copy(name + in.size(), ending.size());
    const int named = ::mkostemp(name, O_CLOEXEC);
    if (named >= 0) ::unlink(name);
    return named;
}

class Actions {
public:
    Actions() { error_ = posix_spawn_file_actions_init(&actions_); }
    ~Actions() { posix_spawn_file_actions_destroy(&actions_); }
    Actions(const Actions&) = delete;
    Actions& operator=(const Actions&) = delete;

    void hand(int file, int as) {
        if (error_ == 0) error_ = posix_spawn_file_actions_adddup2(&actions_, file, as);
    }
    int error() const { return error_; }
    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_ = {};
    int error_ = 0;
};

ForeignEnd endOf(pid_t process) {
    int status = 0;
    if (uninterrupted([&] { return ::waitpid(process, &status, 0); }) < 0) return {errno, 0};
    if (WIFSIGNALED(status)) return {0, signalled + WTERMSIG(status)};
    return {0, WEXITSTATUS(status)};
}

}  // namespace

ScratchFile::ScratchFile() noexcept {
    const char* const told = std::getenv("TMPDIR");
    file_ = openScratch(told != nullptr && *told != '\0' ? told : "/tmp");
    if (file_ >= 0) file_ = movedUp(file_);
    if (file_ < 0) fail();
}

ScratchFile::~ScratchFile() {
    if (file_ >= 0) ::close(file_);
}

bool ScratchFile::fail() noexcept {
    if (error_ == 0) error_ = errno != 0 ? errno : EIO;
    return false;
}

bool ScratchFile::append(std::string_view text) noexcept {
    if (error_ != 0) return false;
    while (!text.empty()) {
        const auto sent = uninterrupted([&] { return ::write(file_, text.data(), text.size()); });
        if (sent < 0) return fail();
        text.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

std::size_t ScratchFile::read(std::uint64_t from, char* bytes, std::size_t size) noexcept {
    if (error_ != 0) return 0;
    const auto got =
        uninterrupted([&] { return ::pread(file_, bytes, size, static_cast<off_t>(from)); });
    return got < 0 ? fail(), 0 : static_cast<std::size_t>(got);
}

ForeignEnd runForeignProgram(const std::vector<const char*>& arguments,
                             const std::vector<int>& descriptors) {
    std::vector<char*> words;
    for (const char* word : arguments) words.push_back(const_cast<char*>(word));
    words.push_back(nullptr);
    Actions actions;
    for (std::size_t i = 0; i < descriptors.size(); ++i) {
        ::lseek(descriptors[i], 0, SEEK_SET);
        actions.hand(descriptors[i], static_cast<int>(i));
    }
    if (actions.error() != 0) return {actions.error(), 0};
    pid_t process = 0;
    const int error =
        ::posix_spawnp(&process, words[0], actions.get(), nullptr, words.data(), environ);
    return error != 0 ? ForeignEnd{error, 0} : endOf(process);
}
