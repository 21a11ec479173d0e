#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "backup/keys/BackupKeys.h"
#include "cli/Console.h"
#include "cli/OptionTable.h"

namespace salvor::cli {

inline constexpr OptionRow kPasswordOption{
    "--password-file", "FILE",
    "open an encrypted backup with the password in FILE; - is standard input"};

/// Whether a person at the terminal is asked for a password that no option gives.
enum class Ask { Yes, No };

/// The keys of an encrypted backup, by the password of the command line. Null for one that is not
/// encrypted, and when there is no password. Throws `Failure` when the password is wrong, cannot
/// be read or helps nothing, and when `stop` ends it. Shows how far it is on a terminal.
std::shared_ptr<const BackupKeys> keysFor(const std::filesystem::path& backup,
                                          const Arguments& given, Console& console, Ask ask,
                                          const std::stop_token& stop);

/// The same for a command that has nothing else to cancel: the first Ctrl-C ends it.
std::shared_ptr<const BackupKeys> keysFor(const std::filesystem::path& backup,
                                          const Arguments& given, Console& console, Ask ask);

/// A line typed on the terminal `fd`, which shows nothing of it; nothing at its end and once an
/// interrupt has come.
std::optional<std::string> lineWithoutEcho(int fd);

}  // namespace salvor::cli
