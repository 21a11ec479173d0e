#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "carving/signatures/SqLiteTableSignatures.h"
#include "recovery/ColumnAttributes.h"
#include "scan/ScanState.h"

namespace salvor {

/// Domain, database and table under which the signatures file keeps a carver's patterns.
struct SignatureKey {
    std::string_view domain;
    std::string_view database;
    std::string_view table;

    friend bool operator==(const SignatureKey&, const SignatureKey&) = default;
};

/// What a carver reads of the signatures file: the patterns under `key`, and of their mappings
/// those that `attributes` names.
template <class Record>
struct SignatureUse {
    SignatureKey key;
    std::span<const ColumnAttribute<Record>> attributes;
};

/// The signature under `key` of those that the scan has; null when there is none.
std::shared_ptr<SQLiteSignature> findSignature(const ScanState& state, const SignatureKey& key);
/// Its patterns; none without a signature.
TablePatterns patternsOf(const ScanState& state, const SignatureKey& key);

}  // namespace salvor
