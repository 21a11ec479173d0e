#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "carving/signatures/SqLiteTableSignatures.h"
#include "scan/ScanState.h"

namespace salvor {

/// The signatures that the program ships with.
inline std::shared_ptr<SqLiteTableSignatures> shippedSignatures() {
    auto signatures = std::make_shared<SqLiteTableSignatures>();
    EXPECT_EQ(signatures->loadSignatures(SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml"),
              "");
    return signatures;
}

/// A pattern from its header text, with names for some of its columns.
inline std::shared_ptr<TablePattern> makePattern(const std::string& header,
                                                 std::vector<AttributesMapping> names = {},
                                                 std::vector<std::string> versions = {}) {
    auto pattern = std::make_shared<TablePattern>();
    pattern->headerPattern = header;
    pattern->hasHeader = true;
    pattern->AttributesMapping = std::move(names);
    pattern->SupportedVersions = std::move(versions);
    return pattern;
}

/// Adds a pattern to a table's signature, which is made if need be, as the signatures file would.
inline void addPattern(ScanState& state, const std::string& domain, const std::string& database,
                       const std::string& table, std::shared_ptr<const TablePattern> pattern) {
    auto all = std::make_shared<SqLiteTableSignatures>();
    if (state.recoverySignatures != nullptr)
        all->tableSignatures = state.recoverySignatures->tableSignatures;
    auto signature = all->Find(domain, database, table);
    if (signature == nullptr) {
        signature = std::make_shared<SQLiteSignature>();
        signature->Name = domain;
        signature->Database = database;
        signature->Table = table;
        all->tableSignatures.push_back(signature);
    }
    signature->TablePatterns.push_back(std::move(pattern));
    state.recoverySignatures = std::move(all);
}

}  // namespace salvor
