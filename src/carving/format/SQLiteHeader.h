#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "util/Bytes.h"
#include "util/Text.h"

namespace salvor {

/// The fields of the 100-byte header of a SQLite database file that carving needs. Nothing is
/// checked: a file that is no database has a header as well and is carved like any other.
/// All numbers are taken as they stand, reinterpreted as signed.
class SQLiteHeader {
  public:
    /// The header of the file at `path`, or nothing when it cannot be read or is too short.
    static std::optional<SQLiteHeader> initWithDatabasePath(const std::filesystem::path& path);
    static std::optional<SQLiteHeader> ReadSQLiteDatabaseHeader(const std::filesystem::path& path);
    /// The same from the bytes of a file; nothing below `kHeaderBytes`.
    static std::optional<SQLiteHeader> fromBytes(Bytes file);
    static constexpr std::size_t kHeaderBytes = 56;

    /// Whether a file begins with the format's own name.
    static bool beginsLikeDatabase(Bytes file);

    std::string SQLiteDatabaseFileFullPath;
    Text Signature;  ///< the first 100 bytes as ASCII; absent when they are not ASCII
    /// As stored: the value 1, which stands for pages of 65536 bytes, is not translated.
    /// Kept: page-size-as-stored.
    std::int32_t PageSize = 0;
    std::int32_t NumberOfPages = 0;
    std::int32_t PageNumberOfFirstListTrunkPage = 0;
    std::int32_t TotalNumberOfFreeListPages = 0;
    std::int32_t HighestNUmberedRootPageNumber = 0;  ///< above 0 in auto-vacuum databases
    bool IsAutoVacuum = false;
    std::int32_t reservedSpace = 0;  ///< never filled

    /// `NumberOfPages` times `PageSize`, wrapping at 32 bits.
    std::int32_t SQLiteDatabaseSizeInBytes() const;
};

}  // namespace salvor
