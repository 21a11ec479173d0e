// The signatures file: XML, patterns, and what the matcher makes of patterns nobody would write.
#include <array>

#include "carving/search/PatternMatcher.h"
#include "carving/signatures/SqLiteTableSignaturesParser.h"
#include "fuzz/Target.h"

using namespace salvor;

namespace {

// Something to match: short records, ordinary text, the ends of number ranges.
std::vector<std::uint8_t> region() {
    std::vector<std::uint8_t> bytes;
    for (unsigned i = 0; i < 256; ++i) bytes.push_back(static_cast<std::uint8_t>(i));
    for (const auto byte : {0x05, 0x04, 0x00, 0x01, 0x17, 0x08, 0x41, 0x42, 0x43, 0x44})
        bytes.push_back(static_cast<std::uint8_t>(byte));
    bytes.insert(bytes.end(), 32, std::uint8_t{0xFF});
    bytes.insert(bytes.end(), 32, std::uint8_t{0x00});
    return bytes;
}

void match(const TablePatterns& patterns) {
    static const std::vector<std::uint8_t> searched = region();
    PatternMatcher matcher;
    matcher.use(patterns);
    matcher.begin(searched);
    SQLiteTableHeaderInfo found;
    const auto length = static_cast<std::int64_t>(searched.size());
    for (std::int64_t offset = 0; offset < length; ++offset) {
        if (matcher.find(offset, found) != MatchResult::Found) break;
        fuzz::expect(found.HeaderStartIndex >= offset && found.HeaderStartIndex < length,
                     "a header is found where the search did not look");
        offset = found.HeaderStartIndex;
    }
}

}  // namespace

SALVOR_FUZZ_TARGET(signatures_xml) {
    SqLiteTableSignaturesParser parser(input);
    const bool whole = parser.parseTableSignatures();
    fuzz::expect(whole == parser.fault().empty(), "a fault is told exactly when reading ended");
    const auto* signatures = parser.sqLiteTableSignatures();
    if (signatures == nullptr) return;
    for (const auto& signature : signatures->tableSignatures) {
        match(signature->TablePatterns);
        for (const auto& pattern : signature->TablePatterns)
            for (const auto& version : pattern->SupportedVersions)
                fuzz::expect(!signature->FindPatternsByVersion(version).empty(),
                             "a pattern is found by its own versions");
    }
}
