#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "tools/sample/SampleTruth.h"

namespace salvor {

/// What a sample backup shall look like. Whatever is left open is as on real devices of that
/// iOS version.
struct SampleOptions {
    int ios = 7;  ///< 4 to 18, or 26
    std::uint32_t messages = 300;
    std::uint64_t seed = 1;
    std::uint32_t pageSize = 4096;
    std::optional<AutoVacuum> autoVacuum = std::nullopt;
    std::optional<bool> secureDelete = std::nullopt;
    bool incrementalVacuum = false;  ///< give the free pages back after the deletions
    bool deletions = true;
    bool lockdownOnly = false;  ///< the manifest tells its version under "Lockdown" only
    bool nested = false;        ///< stored files in two-digit sub-folders, as newer systems do
    bool encrypted = false;  ///< the manifest says so; without a password the files stay readable
    /// Encrypts the backup, as a phone of its generation would.
    std::optional<std::string> password = std::nullopt;
    std::uint32_t firstRounds = 10'000'000;  ///< of the derivation of a password since iOS 10.2
    bool zeroPageCount = false;  ///< header bytes 28 to 31 are 0, as old SQLite left them
};

/// A complete backup folder with real databases: property lists, index and stored files, some of
/// their rows deleted in known ways. Deterministic: equal options give equal databases. Throws
/// std::runtime_error on wrong options and on files that cannot be written.
struct SampleBackup {
    std::filesystem::path folder;
    SampleTruth truth;

    /// Writes the backup into `folder`, which is made if need be, and its truth beside it.
    static SampleBackup write(const std::filesystem::path& folder,
                              const SampleOptions& options = {});
    /// Where the truth of a backup stands: beside the folder, as "<folder>.truth.json".
    static std::filesystem::path truthFile(const std::filesystem::path& folder);

    /// Where the file at `path` of `domain` is stored, flat or in its sub-folder.
    std::filesystem::path file(const std::string& domain, const std::string& path) const;
    std::filesystem::path messageDatabase() const {
        return file("HomeDomain", "Library/SMS/sms.db");
    }
};

}  // namespace salvor
