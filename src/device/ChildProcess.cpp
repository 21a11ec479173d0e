#include "device/ChildProcess.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <termios.h>
#include <unistd.h>

extern char** environ;  // NOLINT(readability-redundant-declaration): POSIX leaves it to the caller

namespace salvor {
namespace {

/// The groups that run, 0 where there is none: all that a signal handler can be told. One beyond
/// them runs as well, unseen by `endAll`.
std::array<std::atomic<pid_t>, 16> groups;
static_assert(std::atomic<pid_t>::is_always_lock_free);

void replaceGroup(pid_t present, pid_t next) {
    for (auto& group : groups) {
        pid_t expected = present;
        if (group.compare_exchange_strong(expected, next)) return;
    }
}

/// Both ends of a pipe, closed unless taken.
class Pipe {
  public:
    enum Kind { Plain, Terminal };

    /// A terminal is a pipe as well where the system has none to give.
    explicit Pipe(Kind kind) {
        if ((kind == Plain || !openTerminal()) && ::pipe2(ends_.data(), O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "a pipe");
        ::fcntl(ends_[0], F_SETFL, O_NONBLOCK);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        for (const int end : ends_) {
            if (end >= 0) ::close(end);
        }
    }

    int writingEnd() const { return ends_[1]; }
    int takeReadingEnd() {
        const int end = ends_[0];
        ends_[0] = -1;
        return end;
    }

  private:
    bool openTerminal() {
        ends_[0] = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        char name[64];
        if (ends_[0] >= 0 && ::grantpt(ends_[0]) == 0 && ::unlockpt(ends_[0]) == 0 &&
            ::ptsname_r(ends_[0], name, sizeof name) == 0)
            ends_[1] = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (ends_[1] >= 0) {
            termios bytesAsTheyAre{};
            ::tcgetattr(ends_[1], &bytesAsTheyAre);
            ::cfmakeraw(&bytesAsTheyAre);
            ::tcsetattr(ends_[1], TCSANOW, &bytesAsTheyAre);
            return true;
        }
        if (ends_[0] >= 0) ::close(ends_[0]);
        return false;
    }

    std::array<int, 2> ends_{-1, -1};
};

/// Default signals, nothing blocked, a group of its own.
class Attributes {
  public:
    Attributes() {
        posix_spawnattr_init(&value_);
        sigset_t all;
        sigset_t none;
        sigfillset(&all);
        sigemptyset(&none);
        posix_spawnattr_setsigdefault(&value_, &all);
        posix_spawnattr_setsigmask(&value_, &none);
        posix_spawnattr_setpgroup(&value_, 0);
        posix_spawnattr_setflags(
            &value_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    ~Attributes() { posix_spawnattr_destroy(&value_); }
    const posix_spawnattr_t* get() const { return &value_; }

  private:
    posix_spawnattr_t value_{};
};

class FileActions {
  public:
    FileActions(int output, int errors) {
        posix_spawn_file_actions_init(&value_);
        posix_spawn_file_actions_addopen(&value_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&value_, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&value_, errors, STDERR_FILENO);
    }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    ~FileActions() { posix_spawn_file_actions_destroy(&value_); }
    const posix_spawn_file_actions_t* get() const { return &value_; }

  private:
    posix_spawn_file_actions_t value_{};
};

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& words) {
    if (words.empty()) throw std::system_error(EINVAL, std::generic_category(), "no program");
    std::vector<std::string> copies = words;
    std::vector<char*> arguments;
    arguments.reserve(copies.size() + 1);
    for (auto& word : copies) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    Pipe output(Pipe::Terminal);
    Pipe errors(Pipe::Plain);
    const FileActions actions(output.writingEnd(), errors.writingEnd());
    const Attributes attributes;
    const int failed = ::posix_spawnp(&pid_, arguments.front(), actions.get(), attributes.get(),
                                      arguments.data(), environ);
    if (failed != 0) throw std::system_error(failed, std::generic_category(), words.front());
    replaceGroup(0, pid_);
    output_ = output.takeReadingEnd();
    errors_ = errors.takeReadingEnd();
}

ChildProcess::~ChildProcess() {
    if (!ended_) reap();
    ::close(output_);
    ::close(errors_);
}

std::optional<ChildProcess::Ended> ChildProcess::ended() {
    siginfo_t info{};
    const auto id = static_cast<id_t>(pid_);
    if (!ended_ && ::waitid(P_PID, id, &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0)
        reap();
    return ended_;
}

// Until it has been waited for, its number is nobody else's: the group can be ended safely.
void ChildProcess::reap() {
    ::kill(-pid_, SIGKILL);
    replaceGroup(pid_, 0);
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) continue;
    ended_.emplace();
    if (WIFEXITED(status)) ended_->exitStatus = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) ended_->signal = WTERMSIG(status);
}

void ChildProcess::signal(int number) {
    if (!ended_) ::kill(-pid_, number);
}

void ChildProcess::endAll() {
    for (const auto& group : groups) {
        if (const pid_t pid = group) ::kill(-pid, SIGKILL);
    }
}

}  // namespace salvor
