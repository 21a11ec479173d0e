#pragma once

#include <memory>
#include <span>

#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/OptionTable.h"

namespace salvor::cli {

/// One command of the program. `execute` parses and draws and leaves the work to the core; it
/// ends by a status or by throwing `Failure`.
class Command {
  public:
    Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;

    virtual const CommandTable& table() const = 0;
    virtual ExitStatus execute(const Arguments& given, Console& console) const = 0;
};

std::unique_ptr<Command> makeScanCommand();
std::unique_ptr<Command> makeInfoCommand();
std::unique_ptr<Command> makeListCommand();
std::unique_ptr<Command> makeIndexCommand();
std::unique_ptr<Command> makeRecoverCommand();
std::unique_ptr<Command> makeExtractCommand();
std::unique_ptr<Command> makeCarveCommand();
std::unique_ptr<Command> makeSignaturesCommand();
std::unique_ptr<Command> makeDevicesCommand();
std::unique_ptr<Command> makeBackupCommand();

/// Every command, in the order of the help.
std::span<const std::unique_ptr<Command>> commands();

}  // namespace salvor::cli
