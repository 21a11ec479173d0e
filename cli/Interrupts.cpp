#include "cli/Interrupts.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "cli/ExitStatus.h"
#include "device/ChildProcess.h"

namespace salvor::cli {
namespace {

constexpr char kSignal = 's';
constexpr char kEnd = 'e';
constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> signalPipe{-1};
std::atomic<int> signalsSeen{0};
static_assert(std::atomic<int>::is_always_lock_free);  // what a signal handler may touch

void send(int fd, char what) {
    while (::write(fd, &what, 1) < 0 && errno == EINTR) continue;
}

extern "C" void onSignal(int) {
    const int before = errno;
    if (signalsSeen.fetch_add(1) > 0) {
        ChildProcess::endAll();
        _exit(static_cast<int>(ExitStatus::Cancelled));
    }
    send(signalPipe, kSignal);
    errno = before;
}

void (*handlerOf(int number))(int) {
    struct sigaction now {};
    sigaction(number, nullptr, &now);
    return now.sa_handler;
}

/// Somebody wants the program to outlive its terminal.
bool isToBeKept(int number) {
    return number == SIGHUP && handlerOf(number) == SIG_IGN;
}

}  // namespace

Interrupts::Interrupts(std::function<void()> cancel) : cancel_(std::move(cancel)) {
    if (::pipe2(pipe_.data(), O_CLOEXEC) != 0) return;  // the signals keep their ordinary effect
    signalsSeen = 0;
    signalPipe = pipe_[1];
    watcher_ = std::thread([this] { wait(); });
    struct sigaction action {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : kSignals)
        if (!isToBeKept(number)) sigaction(number, &action, nullptr);
}

// The handler stays: a signal's ordinary effect would leave what is still to be tidied up.
Interrupts::~Interrupts() {
    if (!watcher_.joinable()) return;
    send(pipe_[1], kEnd);
    watcher_.join();
    signalPipe = -1;
    for (const int fd : pipe_) ::close(fd);
}

bool Interrupts::happened() {
    return signalsSeen > 0;
}

void Interrupts::wait() {
    char what = kEnd;
    while (::read(pipe_[0], &what, 1) < 0 && errno == EINTR) continue;
    if (what == kSignal) cancel_();
}

}  // namespace salvor::cli
