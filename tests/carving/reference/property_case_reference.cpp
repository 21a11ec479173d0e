#include <algorithm>
#include <array>

#include "file_generator.h"
#include "pattern_generator.h"
#include "property_case.h"
#include "random_source.h"

namespace salvor::reference {
namespace {

/// A database of more bytes than this makes the test slow and finds nothing more.
constexpr std::size_t kLargest = 60000;

std::vector<CaseRun> makeRuns(RandomSource& random) {
    constexpr std::array kVersions{"iOS4", "iOS5", "iOS6", "iOS7", "iOS56", "iOS9", "iOS10", ""};
    std::vector<CaseRun> runs(2);
    for (CaseRun& run : runs) {
        run.callList = random.chance(25);
        run.everyRecord = random.chance(50);
        if (random.chance(20)) run.version = random.pick(kVersions);
    }
    runs[1].fullSearch = true;
    return runs;
}

}  // namespace

PropertyCase makeCase(std::uint64_t seed, const std::string& folder) {
    RandomSource random(seed);
    PropertyCase made;
    std::vector<PlannedPattern> patterns = makePatterns(random);
    if (patterns[0].staged == Staged::Nothing && random.chance(30)) {
        made.kind = "SQLite";
        made.file = makeSqliteFile(random, folder, patterns);
        if (made.file.size() > kLargest) made.file.resize(kLargest);
    } else {
        made.kind = "synthetic";
        made.file = makeSyntheticFile(random, patterns);
    }
    if (random.chance(made.kind == "SQLite" ? 60 : 30)) {
        made.kind += ", damaged";
        damageFile(random, made.file);
    }
    made.signatures = writeSignatures(random, patterns);
    for (const auto& pattern : patterns) made.patterns.push_back(meaningOf(pattern));
    made.runs = makeRuns(random);
    return made;
}

}  // namespace salvor::reference
