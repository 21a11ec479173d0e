#include "cli/Program.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <poll.h>
#include <string_view>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

#include "backup/PrivateFolder.h"
#include "cli/Command.h"
#include "cli/Failure.h"
#include "cli/Interrupts.h"
#include "cli/Password.h"
#include "util/FdStream.h"

namespace salvor::cli {
namespace {

constexpr const char* kUsage = "usage: salvor COMMAND [OPTIONS]\n       salvor COMMAND --help\n";

void printHelp(std::ostream& out) {
    out << kUsage
        << "\nFinds personal data, deleted data included, in the backup of an iPhone or iPad.\n"
           "\ncommands:\n";
    std::size_t width = 0;
    for (const auto& command : commands())
        width = std::max(width, std::string_view(command->table().name).size());
    for (const auto& command : commands()) {
        const std::string_view name = command->table().name;
        out << "  " << name << std::string(width - name.size() + 2, ' ') << command->table().summary
            << '\n';
    }
    out << "\noptions:\n  -h, --help  show this help\n  --version   show the version\n";
}

const Command* findCommand(std::string_view name) {
    const auto all = commands();
    const auto found = std::find_if(all.begin(), all.end(), [name](const auto& command) {
        return command->table().name == name;
    });
    return found == all.end() ? nullptr : found->get();
}

ExitStatus report(const Console& console, const Failure& failure, const std::string& usage) {
    console.error(failure.what());
    if (failure.status() == ExitStatus::BadArguments) console.err << usage;
    return failure.status();
}

ExitStatus runCommand(const Command& command, std::span<const std::string> words,
                      Console& console) {
    const auto& table = command.table();
    try {
        const auto given = parseArguments(table, words);
        if (given) return command.execute(*given, console);
        console.out << helpOf(table);
        return ExitStatus::Done;
    } catch (const Failure& failure) {
        return report(console, failure, usageOf(table));
    }
}

ExitStatus dispatch(const std::vector<std::string>& args, Console& console) {
    if (args.empty())
        return report(console, {ExitStatus::BadArguments, "no command is given"}, kUsage);
    const auto& first = args.front();
    if (first == "--help" || first == "-h") {
        printHelp(console.out);
    } else if (first == "--version") {
        console.out << "salvor " << SALVOR_VERSION << '\n';
    } else if (const auto* command = findCommand(first)) {
        return runCommand(*command, std::span(args).subspan(1), console);
    } else {
        return report(console, {ExitStatus::BadArguments, "there is no command \"" + first + '"'},
                      kUsage);
    }
    return ExitStatus::Done;
}

/// What could not be written to standard output is a failure, unless its reader has gone: then it
/// has seen what it wanted.
ExitStatus settleOutput(ExitStatus status, const Console& console) {
    console.out.flush();
    console.err.flush();
    const bool ended = status != ExitStatus::Done && status != ExitStatus::NotAllRead;
    if (console.out || ended) return status;
    const int cause = console.outError();
    if (cause == EPIPE || cause == ECANCELED) return status;
    console.error("standard output: " + std::generic_category().message(cause == 0 ? EIO : cause));
    return ExitStatus::NotWritten;
}

bool redrawsOn(int fd) {
    const char* term = std::getenv("TERM");
    return isatty(fd) != 0 && term != nullptr && std::string_view(term) != "dumb";
}

/// True for a line on `fd`, false at its end or once an interrupt has come.
bool waitForEnter(int fd) {
    for (char c = 0; c != '\n';) {
        pollfd one{fd, POLLIN, 0};
        if (::poll(&one, 1, 100) > 0 && ::read(fd, &c, 1) <= 0) return false;
        if (Interrupts::happened()) return false;
    }
    return true;
}

int terminalWidth(int fd) {
    winsize size{};
    return ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace

std::span<const std::unique_ptr<Command>> commands() {
    static const std::array all = {
        makeScanCommand(),    makeInfoCommand(),    makeListCommand(),  makeIndexCommand(),
        makeExtractCommand(), makeRecoverCommand(), makeCarveCommand(), makeSignaturesCommand(),
        makeDevicesCommand(), makeBackupCommand()};
    return all;
}

int run(const std::vector<std::string>& args, Console& console) {
    auto status = ExitStatus::Failed;
    try {
        status = dispatch(args, console);
    } catch (const std::exception& error) {
        console.error(error.what());
    }
    return static_cast<int>(settleOutput(status, console));
}

int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    Console console{out, err};
    return run(args, console);
}

int runProgram(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    FdStream out(STDOUT_FILENO);
    FdStream err(STDERR_FILENO);
    Console console{out, err};
    console.redraws = redrawsOn(STDERR_FILENO);
    const char* noColour = std::getenv("NO_COLOR");
    console.coloured = console.redraws && (noColour == nullptr || *noColour == '\0');
    console.width = [] { return terminalWidth(STDERR_FILENO); };
    console.giveUpOut = [&out] { out.giveUp(); };
    console.outError = [&out] { return out.errorNumber(); };
    console.outShown = isatty(STDOUT_FILENO) != 0;
    console.asks = isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
    console.enterPressed = [] { return waitForEnter(STDIN_FILENO); };
    console.hiddenLine = [] { return lineWithoutEcho(STDIN_FILENO); };
    PrivateFolder::removeLeftovers();
    return run(std::vector<std::string>(argv + std::min(argc, 1), argv + argc), console);
}

}  // namespace salvor::cli
