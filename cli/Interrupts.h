#pragma once

#include <array>
#include <functional>
#include <thread>

namespace salvor::cli {

/// While it lives, the first SIGINT, SIGTERM or SIGHUP calls `cancel` on a thread of its own and
/// the second ends the program and its children at once with status 130. Later the first one does
/// nothing, for there is only tidying up to be done. A SIGHUP that is ignored stays so. One object
/// at a time.
class Interrupts {
  public:
    explicit Interrupts(std::function<void()> cancel);
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;
    ~Interrupts();

    /// A signal has come.
    static bool happened();

  private:
    void wait();

    std::function<void()> cancel_;
    std::array<int, 2> pipe_{-1, -1};
    std::thread watcher_;
};

}  // namespace salvor::cli
