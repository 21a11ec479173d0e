#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace salvor {

/// A program that runs beside this one, in a process group of its own: keys that a person presses
/// for this program do not reach it. It reads nothing. What it writes comes through two pipes, the
/// output's one a terminal to it: into a plain one it would write only what has filled a buffer.
/// When it ends, what it has left running in that group is ended as well; destroying the object
/// ends both.
class ChildProcess {
  public:
    /// How it ended: one of the two is set.
    struct Ended {
        std::optional<int> exitStatus;
        std::optional<int> signal;
    };

    /// `words` begins with the program, looked up along PATH. Throws `std::system_error`, naming
    /// the program, when it cannot be started.
    explicit ChildProcess(const std::vector<std::string>& words);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    /// The reading ends of its standard output and standard error; they do not block.
    int output() const { return output_; }
    int errors() const { return errors_; }

    /// How it ended, or nothing while it runs.
    std::optional<Ended> ended();
    /// Sends a signal to it and to what it has started.
    void signal(int number);

    /// Ends all that run, and what they have started, at once. A signal handler may call it.
    static void endAll();

  private:
    void reap();

    pid_t pid_ = -1;
    int output_ = -1;
    int errors_ = -1;
    std::optional<Ended> ended_;
};

}  // namespace salvor
