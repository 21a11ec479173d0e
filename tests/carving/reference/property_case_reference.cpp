#include <array>

#include "file_generator.h"
#include "pattern_generator.h"
#include "property_case.h"
#include "random_source.h"

namespace salvor::reference {
namespace {

std::vector<TableCarveOptions> makeRuns(RandomSource& random) {
    using enum RowCollector::RowIds;
    constexpr std::array kVersions{"iOS4", "iOS5", "iOS6", "iOS7", "iOS56", "iOS9", "iOS10", ""};
    std::vector<TableCarveOptions> runs(2, {kCaseDomain, kCaseDatabase, kCaseTable, {}});
    for (auto& run : runs) {
        run.callList = random.chance(25);
        run.rowIds = random.chance(50) ? Every : FirstOnly;
        if (random.chance(20)) run.version = random.pick(kVersions);
    }
    runs[1].fullSearch = true;
    return runs;
}

}  // namespace

PropertyCase makeCase(std::uint64_t seed) {
    RandomSource random(seed);
    const std::vector<PlannedPattern> patterns = makePatterns(random);
    PropertyCase made;
    made.file = makeSyntheticFile(random, patterns);
    if (random.chance(30)) damageFile(random, made.file);
    made.signatures = writeSignatures(random, patterns);
    for (const auto& pattern : patterns) made.patterns.push_back(meaningOf(pattern));
    made.runs = makeRuns(random);
    return made;
}

}  // namespace salvor::reference
