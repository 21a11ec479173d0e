// What the recovery by the schema brings back of deletions that are known, and how often each
// confidence is right: the table of docs/recovery-quality.md. `--rounds N` sets how many random
// databases are made (500 when not given).
#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "tests/support/RecoveryTally.h"
#include "tests/support/TempFolder.h"

namespace salvor::bench {
namespace {

void print(const char* name, const RecoveryTally::Count& count) {
    fmt::print("| {} | {} | {} | {:.4f} |\n", name, count.right, count.all(),
               count.all() == 0
                   ? 1.0
                   : static_cast<double>(count.right) / static_cast<double>(count.all()));
}

void run(std::uint64_t rounds, bool misses) {
    const TempFolder folder;
    RecoveryTally tally;
    for (std::uint64_t seed = 1; seed <= rounds; ++seed) {
        const auto path = folder / "sample.db";
        const RecoverySample sample(path, seed);
        tally.add(sample, path);
    }
    fmt::print("| deleted rows | found | of | share |\n|---|---|---|---|\n");
    print("whole", tally.whole);
    print("without the first four bytes", tally.headless);
    print("with overflow pages, whatever is left", tally.spilled);
    fmt::print("\n| shown as deleted | right | of | share |\n|---|---|---|---|\n");
    print("all", tally.shown);
    constexpr const char* kLevels[] = {"certain", "likely", "possible"};
    for (std::size_t i = 0; i < tally.confidence.size(); ++i)
        print(kLevels[i], tally.confidence[i]);
    for (const auto& [space, count] : tally.space) print(space.c_str(), count);
    print("row ids told", tally.rowIds);
    fmt::print("\nlive rows among them: {}; rows without a row id: {}\n", tally.live,
               tally.lostRowIds);
    if (misses) fmt::print("{}", tally.misses);
}

}  // namespace
}  // namespace salvor::bench

int main(int argc, char** argv) {
    CLI::App parser("Measures what the recovery by the schema brings back.");
    std::uint64_t rounds = 500;
    bool misses = false;
    parser.add_option("--rounds", rounds, "random databases");
    parser.add_flag("--misses", misses, "tell the first faults as well");
    CLI11_PARSE(parser, argc, argv);
    salvor::bench::run(rounds, misses);
    return 0;
}
