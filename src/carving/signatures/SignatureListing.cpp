#include "carving/signatures/SignatureListing.h"

#include <string_view>
#include <unordered_set>

#include "util/MappedFile.h"

namespace salvor {
namespace {

SignatureSummary summarise(const SQLiteSignature& signature) {
    SignatureSummary summary{
        signature.Name, signature.Database, signature.Table, signature.TablePatterns.size(), {}, {},
        signature.line};
    std::unordered_set<std::string_view> seen;
    std::unordered_set<std::string_view> mapped;
    for (const auto& pattern : signature.TablePatterns) {
        for (const std::string& version : pattern->SupportedVersions) {
            if (seen.insert(version).second) summary.versions.push_back(version);
        }
        for (const AttributesMapping& mapping : pattern->AttributesMapping) {
            if (mapped.insert(mapping.Name).second) summary.mappings.push_back(mapping);
        }
    }
    return summary;
}

}  // namespace

SignatureListing SignatureListing::read(const std::filesystem::path& file) {
    SignatureListing listing;
    const auto mapped = MappedFile::open(file);
    if (!mapped) {
        listing.fault = "cannot be read";
        return listing;
    }
    listing.readable = true;
    SqLiteTableSignatures signatures;
    SqLiteTableSignaturesParser parser(mapped->bytes());
    parser.setSqLiteTableSignatures(&signatures);
    parser.parseTableSignatures();
    listing.fault = parser.fault();
    if (listing.fault.empty() && signatures.tableSignatures.empty()) listing.fault = kNoSignatures;
    listing.oddities = parser.oddities();
    for (const auto& signature : signatures.tableSignatures) {
        listing.signatures.push_back(summarise(*signature));
    }
    return listing;
}

}  // namespace salvor
