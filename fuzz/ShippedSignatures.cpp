#include "fuzz/ShippedSignatures.h"

#include <filesystem>

#include "fuzz/Target.h"

namespace salvor::fuzz {
namespace {

const std::filesystem::path kFile = SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml";

std::shared_ptr<SqLiteTableSignatures> load() {
    auto signatures = std::make_shared<SqLiteTableSignatures>();
    const std::string fault = signatures->loadSignatures(kFile);
    expect(fault.empty(), fault);
    return signatures;
}

}  // namespace

std::shared_ptr<SqLiteTableSignatures> shippedSignatures() {
    static const auto signatures = load();
    return signatures;
}

std::vector<reference::PlainPattern> referencePatterns(const TablePatterns& patterns) {
    std::vector<reference::PlainPattern> converted;
    for (const auto& pattern : patterns) {
        auto& one = converted.emplace_back();
        one.versions = pattern->SupportedVersions;
        one.hasHeader = pattern->hasHeader;
        one.columns = pattern->Header();
        for (const auto& mapping : pattern->AttributesMapping)
            one.mappings.push_back({mapping.Name, mapping.Column});
    }
    return converted;
}

}  // namespace salvor::fuzz
