#pragma once

#include <cstdint>
#include <filesystem>

#include "carving/signatures/SqLiteTableSignatures.h"

namespace salvor::bench {

/// Which bytes of a database a carver has to search.
enum class Layout : std::uint8_t {
    Plain,   ///< without pointer maps: gaps, freeblocks and the free-list
    Vacuum,  ///< incremental auto-vacuum: nearly all pages lie behind the last root page
};

/// Message databases with deleted rows, written by SQLite when they are first asked for and
/// removed with the object.
class CarveDatabases {
  public:
    CarveDatabases();
    CarveDatabases(const CarveDatabases&) = delete;
    CarveDatabases& operator=(const CarveDatabases&) = delete;
    ~CarveDatabases();

    /// A database of about `megabytes`.
    std::filesystem::path file(std::int64_t megabytes, Layout layout);

  private:
    std::filesystem::path folder_;
};

/// Signatures for the rows of these databases: one table, patterns of several versions.
const SqLiteTableSignatures& messageSignatures();

inline constexpr const char* kDomain = "HomeDomain";
inline constexpr const char* kDatabase = "sms.db";
inline constexpr const char* kTable = "MESSAGE";

}  // namespace salvor::bench
