#include "cli/Password.h"

#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <openssl/crypto.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "app/Unlocking.h"
#include "cli/Failure.h"
#include "cli/Inputs.h"
#include "cli/Interrupts.h"

namespace salvor::cli {
namespace {

/// Longer ones are no password but the wrong file.
constexpr std::size_t kLongestPassword = 4096;

/// A terminal that shows nothing of what is typed while this lives.
class NoEcho {
  public:
    explicit NoEcho(int fd) : fd_(fd), isTerminal_(::tcgetattr(fd, &before_) == 0) {
        if (!isTerminal_) return;
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(fd_, TCSAFLUSH, &silent);
    }
    NoEcho(const NoEcho&) = delete;
    NoEcho& operator=(const NoEcho&) = delete;
    ~NoEcho() {
        if (isTerminal_) ::tcsetattr(fd_, TCSAFLUSH, &before_);
    }

  private:
    int fd_;
    termios before_{};
    bool isTerminal_;
};

std::string readAll(int fd, const std::string& shown) {
    std::string text;
    text.reserve(kLongestPassword + 3);  // never moved, so nothing is left behind
    char buffer[512];
    for (;;) {
        const auto size = ::read(fd, buffer, sizeof buffer);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0)
            throw Failure(ExitStatus::SourceUnusable,
                          shown + ": " + std::generic_category().message(errno));
        if (size == 0) break;
        if (text.size() + static_cast<std::size_t>(size) > kLongestPassword + 2)
            throw Failure(ExitStatus::SourceUnusable, shown + ": is too long for a password");
        text.append(buffer, static_cast<std::size_t>(size));
    }
    OPENSSL_cleanse(buffer, sizeof buffer);
    return text;
}

Secret passwordOfFile(const std::string& name) {
    const bool standardInput = name == "-";
    if (!standardInput) requireReadableFile(name);
    const int fd = standardInput ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        throw Failure(ExitStatus::SourceUnusable,
                      name + ": " + std::generic_category().message(errno));
    std::string text = readAll(fd, standardInput ? "standard input" : name);
    if (!standardInput) ::close(fd);
    if (text.ends_with('\n')) text.pop_back();
    if (text.ends_with('\r')) text.pop_back();
    return Secret::take(text);
}

std::optional<Secret> passwordFrom(const std::filesystem::path& backup, const Arguments& given,
                                   Console& console, Ask ask) {
    if (const auto file = given.value(kPasswordOption.name)) return passwordOfFile(*file);
    if (ask == Ask::No || !console.asks) return std::nullopt;
    console.err << "Password of the encrypted backup " << backup.filename().string()
                << " (Enter to go on without): " << std::flush;
    auto line = console.hiddenLine();
    console.err << '\n' << std::flush;
    if (Interrupts::happened()) throw Failure(ExitStatus::Cancelled, "cancelled");
    if (!line || line->empty()) return std::nullopt;
    return Secret::take(*line);
}

}  // namespace

std::optional<std::string> lineWithoutEcho(int fd) {
    const NoEcho silent(fd);
    std::string line;
    line.reserve(kLongestPassword);
    for (char c = 0; line.size() < kLongestPassword;) {
        pollfd one{fd, POLLIN, 0};
        if (Interrupts::happened()) return std::nullopt;
        if (::poll(&one, 1, 100) <= 0) continue;
        if (::read(fd, &c, 1) <= 0) return line.empty() ? std::nullopt : std::optional(line);
        if (c == '\n') break;
        line += c;
    }
    return line;
}

std::shared_ptr<const BackupKeys> keysFor(const std::filesystem::path& backup,
                                          const Arguments& given, Console& console, Ask ask,
                                          const std::stop_token& stop) {
    if (!isEncrypted(backup)) return nullptr;
    const auto password = passwordFrom(backup, given, console, ask);
    if (!password) return nullptr;
    const bool shows = console.redraws && !given.has("--quiet") && !given.has("--no-progress");
    const auto watch = [&](std::uint64_t done, std::uint64_t all) {
        if (shows) console.err << fmt::format("\rOpening the backup: {} %", done * 100 / all);
        if (shows) console.err << std::flush;
    };
    const auto opened = openWithPassword(backup, *password, stop, watch);
    if (shows) console.err << "\r\x1b[K" << std::flush;
    switch (opened.result) {
        case Opening::WrongPassword:
            throw Failure(ExitStatus::Encrypted, opened.fault);
        case Opening::Unsupported:
            throw Failure(ExitStatus::SourceUnusable, opened.fault);
        case Opening::Cancelled:
            throw Failure(ExitStatus::Cancelled, "cancelled");
        case Opening::NotEncrypted:
        case Opening::Open:
            break;
    }
    return opened.keys;
}

std::shared_ptr<const BackupKeys> keysFor(const std::filesystem::path& backup,
                                          const Arguments& given, Console& console, Ask ask) {
    std::stop_source stop;
    const Interrupts interrupts([&stop] { stop.request_stop(); });
    return keysFor(backup, given, console, ask, stop.get_token());
}

}  // namespace salvor::cli
