#include <CLI/CLI.hpp>
#include <exception>
#include <fmt/format.h>
#include <memory>
#include <string>
#include <vector>

#include "bench/recall/RecallCase.h"
#include "tests/support/TempFolder.h"

namespace salvor {
namespace {

struct Plan {
    std::vector<int> versions{4, 5, 6, 7, 8, 9};
    std::vector<std::uint32_t> pageSizes{1024, 4096, 8192};
    std::uint32_t messages = 400;
    std::uint64_t seeds = 3;
};

struct Variant {
    const char* name;
    std::optional<AutoVacuum> autoVacuum;
    std::optional<bool> secureDelete;
};
constexpr Variant kVariants[] = {
    {"none", AutoVacuum::None, false},
    {"full", AutoVacuum::Full, false},
    {"incremental", AutoVacuum::Incremental, false},
    {"none, secure delete", AutoVacuum::None, true},
};

RecallFigures measure(const Plan& plan, const SampleOptions& options,
                      const std::shared_ptr<SqLiteTableSignatures>& signatures) {
    RecallFigures sum;
    for (std::uint64_t seed = 1; seed <= plan.seeds; ++seed) {
        TempFolder temp("recall");
        auto seeded = options;
        seeded.seed = seed;
        sum.add(measureRecall(SampleBackup::write(temp / "backup", seeded), signatures));
    }
    return sum;
}

constexpr const char* kSpaces[] = {
    "gap",
    "freeblock, single",
    "freeblock, merged",
    "free page",
    "after-root gap",
    "after-root freeblock, single",
    "after-root freeblock, merged",
    "after-root free page",
    "other",
    "after-root other",
};

/// "exact/present", and the damaged ones behind a plus.
std::string cell(const RecallCount& count) {
    if (count.present == 0) return "";
    const auto plain = fmt::format("{}/{}", count.exact, count.present);
    return count.damaged == 0 ? plain : fmt::format("{} +{}", plain, count.damaged);
}

void printHead() {
    fmt::print("| iOS | page size | auto-vacuum |");
    for (const char* space : kSpaces) fmt::print(" {} |", space);
    fmt::print(" all | per cent | gone | live listed | other listed | row ids right |\n|");
    for (std::size_t i = 0; i < std::size(kSpaces) + 9; ++i) fmt::print("---|");
    fmt::print("\n");
}

void printFigures(const std::string& name, const RecallFigures& figures) {
    fmt::print("| {} |", name);
    RecallCount all;
    for (const char* space : kSpaces) {
        const auto found = figures.bySpace.find(space);
        const auto count = found == figures.bySpace.end() ? RecallCount() : found->second;
        fmt::print(" {} |", cell(count));
        all.add(count);
    }
    fmt::print(" {} | {} | {} of {} | {} of {} | {} | {} |\n", cell(all),
               all.present == 0 ? "-" : std::to_string(100 * all.exact / all.present), figures.gone,
               figures.deleted, figures.liveListed, figures.live, figures.otherListed,
               figures.rowIdsRight);
}

void printLinks(const std::map<std::string, RecallFigures>& byVariant) {
    fmt::print("\n| auto-vacuum | table | right | wrong |\n|---|---|---|---|\n");
    for (const auto& [variant, figures] : byVariant) {
        for (const auto& [table, count] : figures.links) {
            fmt::print("| {} | {} | {} | {} |\n", variant, table, count.right, count.wrong);
        }
    }
}

void run(const Plan& plan, const std::shared_ptr<SqLiteTableSignatures>& signatures) {
    std::map<std::string, RecallFigures> byVariant;
    printHead();
    for (const auto& variant : kVariants) {
        for (const int ios : plan.versions) {
            for (const auto pageSize : plan.pageSizes) {
                SampleOptions options;
                options.ios = ios;
                options.pageSize = pageSize;
                options.messages = plan.messages;
                options.autoVacuum = variant.autoVacuum;
                options.secureDelete = variant.secureDelete;
                const auto figures = measure(plan, options, signatures);
                printFigures(fmt::format("{} | {} | {}", ios, pageSize, variant.name), figures);
                byVariant[variant.name].add(figures);
            }
        }
    }
    for (const auto& [variant, figures] : byVariant) {
        printFigures(fmt::format("all | all | {}", variant), figures);
    }
    printLinks(byVariant);
}

}  // namespace
}  // namespace salvor

int main(int argc, char** argv) {
    salvor::Plan plan;
    std::string file;
    CLI::App app{
        "Measures how many deleted messages come back from databases whose truth is "
        "known."};
    app.add_option("--signatures", file, "signatures file to measure")->required();
    app.add_option("--ios", plan.versions, "iOS versions")->delimiter(',');
    app.add_option("--page-size", plan.pageSizes, "page sizes")->delimiter(',');
    app.add_option("--messages", plan.messages, "messages of each database");
    app.add_option("--seeds", plan.seeds, "databases of each kind");
    CLI11_PARSE(app, argc, argv);

    try {
        auto signatures = std::make_shared<salvor::SqLiteTableSignatures>();
        const auto fault = signatures->loadSignatures(file);
        if (!fault.empty()) throw std::runtime_error(fault);
        salvor::run(plan, signatures);
    } catch (const std::exception& error) {
        fmt::print(stderr, "recall: error: {}\n", error.what());
        return 1;
    }
    return 0;
}
