#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "carving/signatures/TablePattern.h"
#include "util/Bytes.h"

namespace salvor {

using TablePatterns = std::vector<std::shared_ptr<const TablePattern>>;

/// The header patterns of one table of one database of one backup domain.
class SQLiteSignature {
  public:
    std::string Name;  ///< backup domain
    std::string Database;
    std::string Table;
    long line = 0;  ///< in the signatures file, from 1
    salvor::TablePatterns TablePatterns;

    /// The patterns that support exactly this version, in file order.
    salvor::TablePatterns FindPatternsByVersion(const std::string& version) const;
    /// A new empty pattern; selects nothing.
    std::shared_ptr<TablePattern> FindByNumberOfColumns() const;
};

/// What is wrong with a whole file without a signature.
inline constexpr const char* kNoSignatures = "holds no signature";

/// The table signatures of the application, in file order.
class SqLiteTableSignatures {
  public:
    std::vector<std::shared_ptr<SQLiteSignature>> tableSignatures;
    bool loaded = false;

    /// Reads the signatures file at `path`; a missing or broken file leaves what was completed
    /// before. Always sets `loaded`. Returns what was wrong with the file, one without any
    /// signature included, or nothing.
    std::string loadSignatures(const std::filesystem::path& path);
    /// Nothing is fetched from anywhere: false.
    bool LoadRemoteSignaturesFile() { return false; }
    /// Reads the file; returns what was wrong with it, or nothing.
    std::string LoadLocalSignaturesFile(const std::filesystem::path& path);
    /// No network connection is ever opened, so the answer is no.
    static bool connected() { return false; }
    /// The first signature equal in all three, or null.
    std::shared_ptr<SQLiteSignature> Find(const std::string& domain, const std::string& database,
                                          const std::string& table) const;
};

}  // namespace salvor
