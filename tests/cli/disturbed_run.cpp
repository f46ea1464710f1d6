#include "cli/disturbed_run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <iterator>
#include <map>

#if defined(__x86_64__)

namespace {

struct Call {
    long number;
    const char* name;
    int pathAt;       // which argument is a path, -1 for none
    int sizeAt;       // which one is a size that may be cut short
    bool interrupts;  // whether a signal may end it early
};

constexpr Call calls[] = {
    {SYS_open, "open", 0, -1, true},
    {SYS_openat, "openat", 1, -1, true},
    {SYS_read, "read", -1, 2, true},
    {SYS_pread64, "pread", -1, 2, true},
    {SYS_write, "write", -1, 2, true},
    {SYS_pwrite64, "pwrite", -1, 2, true},
    {SYS_fsync, "fsync", -1, -1, true},
    {SYS_fdatasync, "fdatasync", -1, -1, true},
    {SYS_close, "close", -1, -1, false},
    {SYS_fchmod, "fchmod", -1, -1, false},
    {SYS_chmod, "chmod", 0, -1, false},
    {SYS_fchmodat, "fchmodat", 1, -1, false},
    {SYS_stat, "stat", 0, -1, false},
    {SYS_lstat, "lstat", 0, -1, false},
    {SYS_fstat, "fstat", -1, -1, false},
    {SYS_newfstatat, "newfstatat", 1, -1, false},
    {SYS_statx, "statx", 1, -1, false},
    {SYS_readlink, "readlink", 0, -1, false},
    {SYS_readlinkat, "readlinkat", 1, -1, false},
    {SYS_access, "access", 0, -1, false},
    {SYS_faccessat, "faccessat", 1, -1, false},
    {SYS_faccessat2, "faccessat2", 1, -1, false},
    {SYS_rename, "rename", 0, -1, false},
    {SYS_renameat, "renameat", 1, -1, false},
    {SYS_renameat2, "renameat2", 1, -1, false},
    {SYS_unlink, "unlink", 0, -1, false},
    {SYS_unlinkat, "unlinkat", 1, -1, false},
    {SYS_link, "link", 0, -1, false},
    {SYS_linkat, "linkat", 1, -1, false},
    {SYS_flock, "flock", -1, -1, true},
    {SYS_fcntl, "fcntl", -1, -1, false},
    {SYS_dup, "dup", -1, -1, false},
    {SYS_lseek, "lseek", -1, -1, false},
    {SYS_fallocate, "fallocate", -1, -1, true},
    {SYS_ftruncate, "ftruncate", -1, -1, true},
    {SYS_fchown, "fchown", -1, -1, false},
    {SYS_fchownat, "fchownat", 1, -1, false},
    {SYS_fstatfs, "fstatfs", -1, -1, false},
    {SYS_getdents64, "getdents64", -1, -1, false},
    {SYS_flistxattr, "flistxattr", -1, -1, false},
    {SYS_fgetxattr, "fgetxattr", -1, -1, false},
    {SYS_fsetxattr, "fsetxattr", -1, -1, false},
    {SYS_fremovexattr, "fremovexattr", -1, -1, false},
    {SYS_memfd_create, "memfd_create", -1, -1, false},
};

const Call* callOf(long number) {
    const Call* found = std::find_if(std::begin(calls), std::end(calls),
                                     [&](const Call& call) { return call.number == number; });
    return found == std::end(calls) ? nullptr : found;
}

unsigned long long& argument(user_regs_struct& registers, int i) {
    unsigned long long* const all[] = {&registers.rdi, &registers.rsi, &registers.rdx};
    return *all[i];
}

// A name of the folder that the program runs in, no library's and no setting's of the machine.
bool isOfFolder(pid_t process, unsigned long long address) {
    char first = 0;
    iovec here = {&first, 1};
    iovec there = {reinterpret_cast<void*>(address), 1};
    return ::process_vm_readv(process, &here, 1, &there, 1, 0) == 1 && first != '/' && first != 0;
}

class Tracer {
public:
    Tracer(pid_t program, const Disturbance& disturbance)
        : program_(program), disturbance_(disturbance) {}

    DisturbedRun follow() {
        int status = 0;
        ::waitpid(program_, &status, 0);
        ::ptrace(PTRACE_SETOPTIONS, program_, nullptr,
                 PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL);
        ::ptrace(PTRACE_SYSCALL, program_, nullptr, nullptr);
        while (!isOver_) {
            const pid_t thread = ::waitpid(-1, &status, __WALL);
            if (thread < 0) break;
            attend(thread, status);
        }
        return run_;
    }

private:
    struct Thread {
        bool isInCall = false;
        bool killsAfter = false;
        bool answersError = false;
        int error = 0;
    };

    void attend(pid_t thread, int status) {
        if (WIFEXITED(status) || WIFSIGNALED(status)) return end(thread, status);
        if (!WIFSTOPPED(status)) return;
        int signal = WSTOPSIG(status);
        if (signal == (SIGTRAP | 0x80)) {
            atCall(thread);
            signal = 0;
        } else if (signal == SIGTRAP || signal == SIGSTOP) {
            signal = 0;
        }
        ::ptrace(PTRACE_SYSCALL, thread, nullptr, static_cast<long>(signal));
    }

    void end(pid_t thread, int status) {
        if (thread != program_) return;
        run_.exitCode = WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status);
        isOver_ = true;
    }

    void atCall(pid_t thread) {
        Thread& state = threads_[thread];
        user_regs_struct registers;
        if (::ptrace(PTRACE_GETREGS, thread, nullptr, &registers) != 0) return;
        state.isInCall = !state.isInCall;
        if (state.isInCall) {
            enter(thread, state, registers);
        } else {
            leave(thread, state, registers);
        }
    }

    void enter(pid_t thread, Thread& state, user_regs_struct& registers) {
        const Call* call = callOf(static_cast<long>(registers.orig_rax));
        if (call == nullptr) return;
        const bool named = call->pathAt >= 0;
        hasBegun_ = hasBegun_ || (named && isOfFolder(thread, argument(registers, call->pathAt)));
        if (!hasBegun_ || (!named && registers.rdi <= STDERR_FILENO)) return;
        ++run_.calls;
        if (isDue()) disturb(*call, thread, state, registers);
    }

    bool isDue() const {
        const bool goesOn = disturbance_.kind == Disturbance::failsFromThere ||
                            disturbance_.kind == Disturbance::isOneByte;
        return goesOn ? run_.calls >= disturbance_.at : run_.calls == disturbance_.at;
    }

    void disturb(const Call& call, pid_t thread, Thread& state, user_regs_struct& registers) {
        switch (disturbance_.kind) {
            case Disturbance::none:
                return;
            case Disturbance::fails:
            case Disturbance::failsFromThere:
                return fail(call, disturbance_.error, thread, state, registers);
            case Disturbance::isInterrupted:
                if (call.interrupts) fail(call, EINTR, thread, state, registers);
                return;
            case Disturbance::isHalved:
            case Disturbance::isOneByte:
                return cut(call, thread, registers);
            case Disturbance::isKilledBefore:
                note(call);
                ::kill(program_, SIGKILL);
                return;
            case Disturbance::isKilledAfter:
                note(call);
                state.killsAfter = true;
        }
    }

    void note(const Call& call) {
        if (!run_.happened) run_.call = call.name;
        run_.happened = true;
    }

    // A file that fails to close is closed all the same.
    void fail(const Call& call, int error, pid_t thread, Thread& state,
              user_regs_struct& registers) {
        note(call);
        state.answersError = true;
        state.error = error;
        if (call.number == SYS_close) return;
        registers.orig_rax = static_cast<unsigned long long>(-1);
        ::ptrace(PTRACE_SETREGS, thread, nullptr, &registers);
    }

    void cut(const Call& call, pid_t thread, user_regs_struct& registers) {
        if (call.sizeAt < 0 || argument(registers, call.sizeAt) < 2) return;
        note(call);
        unsigned long long& size = argument(registers, call.sizeAt);
        size = disturbance_.kind == Disturbance::isOneByte ? 1 : size / 2;
        ::ptrace(PTRACE_SETREGS, thread, nullptr, &registers);
    }

    void leave(pid_t thread, Thread& state, user_regs_struct& registers) {
        if (state.killsAfter) ::kill(program_, SIGKILL);
        if (state.answersError) {
            registers.rax = static_cast<unsigned long long>(-state.error);
            ::ptrace(PTRACE_SETREGS, thread, nullptr, &registers);
        }
        state = Thread{};
    }

    pid_t program_;
    Disturbance disturbance_;
    std::map<pid_t, Thread> threads_;
    bool hasBegun_ = false;
    bool isOver_ = false;
    DisturbedRun run_;
};

[[noreturn]] void becomeTraced(const WorkFolder& folder, std::vector<std::string> words) {
    std::vector<char*> arguments;
    words[0] = VEK_PROGRAM;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    // Who looks for lost memory traces the program, too, and cannot.
    std::string options = "ASAN_OPTIONS=detect_leaks=0";
    std::string locale = "LC_ALL=C.UTF-8";
    char* environment[] = {options.data(), locale.data(), nullptr};
    const int nothing = ::open("/dev/null", O_RDWR);
    for (int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(nothing, stream);
    ::close(nothing);
    if (::chdir(folder.path().c_str()) != 0) ::_exit(127);
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    ::execve(VEK_PROGRAM, arguments.data(), environment);
    ::_exit(127);
}

}  // namespace

bool canDisturb() {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 ? 0 : 1);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

DisturbedRun runDisturbed(const WorkFolder& folder, const std::vector<std::string>& words,
                          const Disturbance& disturbance) {
    const pid_t child = ::fork();
    if (child == 0) becomeTraced(folder, words);
    return Tracer(child, disturbance).follow();
}

#else

bool canDisturb() {
    return false;
}

DisturbedRun runDisturbed(const WorkFolder&, const std::vector<std::string>&, const Disturbance&) {
    return {};
}

#endif
