#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <string>

#include "tools/sample/SampleBackup.h"

namespace {

int makeSample(const std::filesystem::path& out, const salvor::SampleOptions& options) {
    if (std::filesystem::exists(out) &&
        (!std::filesystem::is_directory(out) || !std::filesystem::is_empty(out))) {
        fmt::print(stderr, "make-sample-backup: error: {}: exists and is not an empty folder\n",
                   out.string());
        return 2;
    }
    const auto sample = salvor::SampleBackup::write(out, options);
    fmt::print("{}: iOS {}, {} live and {} deleted records\n{}: what was deleted and how\n",
               out.string(), sample.truth.version, sample.truth.live.size(),
               sample.truth.deleted.size(), salvor::SampleBackup::truthFile(out).string());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    salvor::SampleOptions options;
    std::string out;
    salvor::AutoVacuum autoVacuum{};
    bool secureDelete = false;
    const std::map<std::string, salvor::AutoVacuum> vacuums{
        {"none", salvor::AutoVacuum::None},
        {"full", salvor::AutoVacuum::Full},
        {"incremental", salvor::AutoVacuum::Incremental}};
    const std::map<std::string, bool> switches{{"on", true}, {"off", false}};

    CLI::App app{
        "Writes a complete sample backup whose deleted messages are known. What is not "
        "said is as on real devices of the iOS version."};
    app.add_option("OUT", out, "folder to write; must be empty or not exist")->required();
    app.add_option("--ios", options.ios, "iOS version")
        ->check(CLI::Range(4, 18) | CLI::Range(26, 26))
        ->capture_default_str();
    app.add_option("--messages", options.messages, "number of messages before the deletions")
        ->check(CLI::Range(0, 10'000'000))
        ->capture_default_str();
    app.add_option("--seed", options.seed, "another seed gives another sample")
        ->capture_default_str();
    app.add_option("--page-size", options.pageSize, "page size of the databases")
        ->capture_default_str();
    auto* vacuum = app.add_option("--auto-vacuum", autoVacuum, "none, full or incremental")
                       ->transform(CLI::CheckedTransformer(vacuums));
    auto* secure = app.add_option("--secure-delete", secureDelete, "on or off")
                       ->transform(CLI::CheckedTransformer(switches));
    app.add_flag("--incremental-vacuum", options.incrementalVacuum,
                 "give free pages back after the deletions");
    app.add_flag("--lockdown-only", options.lockdownOnly,
                 "the manifest tells its version under \"Lockdown\" only");
    app.add_flag("--nested", options.nested, "stored files in two-digit sub-folders");
    app.add_option("--password", options.password, "encrypt the backup with this password");
    app.add_option("--rounds", options.firstRounds,
                   "rounds of the slow part of the password's derivation, since iOS 10")
        ->check(CLI::Range(1, 10'000'000))
        ->capture_default_str();
    CLI11_PARSE(app, argc, argv);

    if (*vacuum) options.autoVacuum = autoVacuum;
    if (*secure) options.secureDelete = secureDelete;
    try {
        return makeSample(out, options);
    } catch (const std::exception& error) {
        fmt::print(stderr, "make-sample-backup: error: {}\n", error.what());
        return 1;
    }
}
