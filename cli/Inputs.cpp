#include "cli/Inputs.h"

#include <fmt/format.h>
#include <utility>

#include "cli/Failure.h"

namespace salvor::cli {

namespace fs = std::filesystem;

namespace {

void requireNoFault(const std::string& fault) {
    if (!fault.empty()) throw Failure(ExitStatus::SourceUnusable, fault);
}

}  // namespace

fs::path require(NamedSource source) {
    requireNoFault(source.fault);
    return std::move(source.path);
}

void requireReadableFolder(const fs::path& path) {
    requireNoFault(whyNoFolder(path));
}

void requireReadableFile(const fs::path& path) {
    requireNoFault(whyNoFile(path));
}

SqLiteTableSignatures readSignatures(const fs::path& path, const Console& console) {
    requireReadableFile(path);
    SqLiteTableSignatures signatures;
    const auto wrong = signatures.loadSignatures(path);
    if (signatures.tableSignatures.empty())
        requireNoFault(fmt::format("{}: {}", path.string(), wrong));
    if (!wrong.empty()) console.warning(fmt::format("{}: {}", path.string(), wrong));
    return signatures;
}

}  // namespace salvor::cli
