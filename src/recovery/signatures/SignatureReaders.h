#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "carving/signatures/SignatureListing.h"
#include "recovery/SignatureUse.h"

namespace salvor {

/// A carver as a reader of the signatures file.
struct SignatureReader {
    std::string_view carver;  ///< its class
    SignatureKey key;
    std::vector<std::string_view> names;  ///< the mappings that fill its records
};

/// Every carver, whether a scan runs it or not.
std::span<const SignatureReader> signatureReaders();

/// What of a signatures file no carver reads: whole tables, and of the others the mappings whose
/// names none of the table's carvers knows.
std::vector<SignatureOddity> unreadSignatures(const SignatureListing& listing);

}  // namespace salvor
