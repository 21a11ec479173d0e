#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "export/ExportWatch.h"
#include "util/Bytes.h"

namespace salvor {

struct RowKind;
class ScanState;

/// A file that an export wrote, or tried to.
struct ExportedFile {
    std::filesystem::path path;
    std::size_t rows = 0;
    std::string cause;  ///< why there is no file; "" when it was written
    bool cancelled = false;

    bool written() const { return cause.empty(); }
};

/// Writes the rows of one category to a comma-separated file without a header line: live rows,
/// then deleted ones. With `onlyTicked` only rows whose `isChecked` is 1; maps, accounts,
/// applications and the user dictionary ignore it (Kept: unticked-lists). An operation that finds
/// no row creates no file and answers with nothing; a file that cannot be created, fails half-way
/// or is cancelled is removed and reported, never thrown. No export command calls
/// `ExportAccountData`, `ExportDeleted` and `GetTheLengthOfTheStringBytes`.
class Exporter {
  public:
    using Path = std::filesystem::path;
    using Result = std::optional<ExportedFile>;

    /// The shared exporter, which from now on has `path` as its `ExportFileLocation`.
    static Exporter& defaultExporter(const Path& path);
    Path ExportFileLocation() const;

    /// The rows of one kind; nothing for media, whose files are copied.
    Result exportRows(const RowKind& kind, const ScanState& state, const Path& path,
                      bool onlyTicked, const ExportWatch& watch = {}) const;

    // The rows of one category, or of one list that belongs to none.
    Result ExportSMS(const ScanState& state, const Path& path, bool onlyTicked,
                     const ExportWatch& watch = {}) const;
    Result ExportContact(const ScanState& state, const Path& path, bool onlyTicked,
                         const ExportWatch& watch = {}) const;
    Result ExportCallLog(const ScanState& state, const Path& path, bool onlyTicked,
                         const ExportWatch& watch = {}) const;
    Result ExportNotes(const ScanState& state, const Path& path, bool onlyTicked,
                       const ExportWatch& watch = {}) const;
    Result ExportCalendar(const ScanState& state, const Path& path, bool onlyTicked,
                          const ExportWatch& watch = {}) const;
    Result ExportWhatsApp(const ScanState& state, const Path& path, bool onlyTicked,
                          const ExportWatch& watch = {}) const;
    Result ExportInternetData(const ScanState& state, const Path& path, bool onlyTicked,
                              const ExportWatch& watch = {}) const;
    Result ExportMapHistory(const ScanState& state, const Path& path, bool onlyTicked,
                            const ExportWatch& watch = {}) const;
    Result ExportAccountData(const ScanState& state, const Path& path, bool onlyTicked,
                             const ExportWatch& watch = {}) const;
    Result ExportApplicationData(const ScanState& state, const Path& path, bool onlyTicked,
                                 const ExportWatch& watch = {}) const;
    Result KeyboardDictionary(const ScanState& state, const Path& path, bool onlyTicked,
                              const ExportWatch& watch = {}) const;
    /// Does nothing. Kept: deleted-export-empty.
    Result ExportDeleted(const ScanState& state, const Path& path, bool onlyTicked,
                         const ExportWatch& watch = {}) const;

    /// The index just past the first zero byte at or after `start`; the length of the bytes when
    /// there is none.
    static std::size_t GetTheLengthOfTheStringBytes(Bytes bytes, std::size_t start);

  private:
    Exporter() = default;

    mutable std::mutex mutex_;
    Path location_;
};

}  // namespace salvor
