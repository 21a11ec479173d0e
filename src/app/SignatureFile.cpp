#include "app/SignatureFile.h"

#include <system_error>

namespace salvor {
namespace {

constexpr auto kFileName = "RecoverySignatures.xml";

std::filesystem::path programFolder() {
    std::error_code failed;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", failed);
    return failed ? std::filesystem::path() : program.parent_path();
}

}  // namespace

std::optional<std::filesystem::path> findSignatureFile(
    const std::optional<std::filesystem::path>& given) {
    if (given) return given;
    const auto folder = programFolder();
    std::error_code ignored;
    for (const auto& candidate : {folder / kFileName, folder / "../share/salvor" / kFileName}) {
        if (std::filesystem::is_regular_file(candidate, ignored)) return candidate;
    }
    return std::nullopt;
}

}  // namespace salvor
