#include "app/ScanSummary.h"

#include <fmt/format.h>

#include "scan/Categories.h"

namespace salvor {

std::string countText(std::uint64_t count) {
    auto digits = std::to_string(count);
    for (auto place = static_cast<std::ptrdiff_t>(digits.size()) - 3; place > 0; place -= 3)
        digits.insert(static_cast<std::size_t>(place), 1, ',');
    return digits;
}

std::string summaryText(const ScanState& state, std::int32_t code, ScanResult result,
                        std::chrono::milliseconds elapsed) {
    std::size_t live = 0;
    std::size_t deleted = 0;
    for (const auto& one : countRecords(state, code)) {
        live += one.live;
        deleted += one.deleted;
    }
    const char* how = result == ScanResult::Cancelled ? "Cancelled"
                      : result == ScanResult::Failed  ? "Failed"
                                                      : "Done";
    return fmt::format("{} after {:.1f} s: {} live and {} deleted records.", how,
                       static_cast<double>(elapsed.count()) / 1000, countText(live),
                       countText(deleted));
}

std::string versionNotice(const ScanOutcome& outcome) {
    const auto shown = [](const Text& version) { return version.value_or("no version"); };
    return fmt::format(
        "{}: scanned as iOS 0.0, for the version is not where it is read; Info.plist says {}, the "
        "manifest's Lockdown dictionary {}",
        outcome.backup.string(), shown(outcome.versions.infoPlist),
        shown(outcome.versions.lockdown));
}

}  // namespace salvor
