#pragma once

#include <filesystem>
#include <memory>
#include <stop_token>
#include <string>

#include "backup/keys/BackupKeys.h"

namespace salvor {

/// How the opening of an encrypted backup ended.
enum class Opening {
    NotEncrypted,  ///< there is nothing to open
    Open,
    WrongPassword,
    Unsupported,  ///< it cannot be opened by any password; `fault` says why
    Cancelled,
};

struct OpenedBackup {
    Opening result = Opening::NotEncrypted;
    std::shared_ptr<const BackupKeys> keys;  ///< null unless open
    std::string fault;                       ///< naming the backup; "" when there is none
};

bool isEncrypted(const std::filesystem::path& backup);

/// Derives the key of `password` and opens the backup's keys with it, which takes some seconds of
/// one core. Nothing is written.
OpenedBackup openWithPassword(const std::filesystem::path& backup, const Secret& password,
                              const std::stop_token& stop = {}, const RoundsWatch& watch = {});

}  // namespace salvor
