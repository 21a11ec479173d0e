#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "util/Bytes.h"

namespace salvor {

struct RowKind;
class ScanState;

/// A file that an export wrote, or tried to.
struct ExportedFile {
    std::filesystem::path path;
    std::size_t rows = 0;
    std::string cause;  ///< why there is no file; "" when it was written

    bool written() const { return cause.empty(); }
};

/// Writes the rows of one category to a comma-separated file without a header line: live rows,
/// then deleted ones. With `onlyTicked` only rows whose `isChecked` is 1; maps, accounts,
/// applications and the user dictionary ignore it. An operation that finds no row creates no file
/// and answers with nothing; a file that cannot be created or fails half-way is removed and
/// reported, never thrown.
class Exporter {
  public:
    using Path = std::filesystem::path;
    using Result = std::optional<ExportedFile>;

    /// The shared exporter, which from now on has `path` as its `ExportFileLocation`.
    static Exporter& defaultExporter(const Path& path);
    Path ExportFileLocation() const;

    /// The rows of one kind; nothing for media, whose files are copied.
    Result exportRows(const RowKind& kind, const ScanState& state, const Path& path,
                      bool onlyTicked) const;

    // The rows of one category, or of one list that belongs to none.
    Result ExportSMS(const ScanState& state, const Path& path, bool onlyTicked) const;
    Result ExportContact(const ScanState& state, const Path& path, bool onlyTicked) const;
    Result ExportCallLog(const ScanState& state, const Path& path, bool onlyTicked) const;
    Result ExportNotes(const ScanState& state, const Path& path, bool onlyTicked) const;
    Result ExportCalendar(const ScanState& state, const Path& path, bool onlyTicked) const;
    Result ExportWhatsApp(const ScanState& state, const Path& path, bool onlyTicked) const;
    Result ExportInternetData(const ScanState& state, const Path& path, bool onlyTicked) const;
    Result ExportMapHistory(const ScanState& state, const Path& path, bool onlyTicked) const;
    Result ExportAccountData(const ScanState& state, const Path& path, bool onlyTicked) const;
    Result ExportApplicationData(const ScanState& state, const Path& path, bool onlyTicked) const;
    Result KeyboardDictionary(const ScanState& state, const Path& path, bool onlyTicked) const;
    /// Does nothing: deliberate.
    Result ExportDeleted(const ScanState& state, const Path& path, bool onlyTicked) const;

    /// The index just past the first zero byte at or after `start`; the length of the bytes when
    /// there is none.
    static std::size_t GetTheLengthOfTheStringBytes(Bytes bytes, std::size_t start);

  private:
    Exporter() = default;

    mutable std::mutex mutex_;
    Path location_;
};

}  // namespace salvor
