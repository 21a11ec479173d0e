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

void printFigures(int ios, std::uint32_t pageSize, const char* variant,
                  const RecallFigures& figures) {
    RecallCount all;
    for (const auto& [space, count] : figures.bySpace) {
        fmt::print("| {} | {} | {} | {} | {} | {} | {} |\n", ios, pageSize, variant, space,
                   count.present, count.exact, count.damaged);
        all.add(count);
    }
    fmt::print("| {} | {} | {} | **all** ({} deleted, {} gone) | {} | {} | {} |\n", ios, pageSize,
               variant, figures.deleted, figures.gone, all.present, all.exact, all.damaged);
    fmt::print("|  |  |  | row ids right {}, live listed {}, other listed {}", figures.rowIdsRight,
               figures.liveListed, figures.otherListed);
    for (const auto& [table, count] : figures.links) {
        fmt::print(", {} {}/{}", table, count.first, count.second);
    }
    fmt::print(" |  |  |  |\n");
}

void run(const Plan& plan, const std::shared_ptr<SqLiteTableSignatures>& signatures) {
    fmt::print("| iOS | page size | auto-vacuum | space | rows present | exact | damaged |\n");
    fmt::print("|---|---|---|---|---|---|---|\n");
    for (const auto& variant : kVariants) {
        for (const int ios : plan.versions) {
            for (const auto pageSize : plan.pageSizes) {
                SampleOptions options;
                options.ios = ios;
                options.pageSize = pageSize;
                options.messages = plan.messages;
                options.autoVacuum = variant.autoVacuum;
                options.secureDelete = variant.secureDelete;
                printFigures(ios, pageSize, variant.name, measure(plan, options, signatures));
            }
        }
    }
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
