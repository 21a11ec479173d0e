#include "recovery/messages/MessagePatterns.h"

namespace salvor {
namespace {

std::shared_ptr<SQLiteSignature> messageSignature(const ScanState& state,
                                                  const std::string& table) {
    if (state.recoverySignatures == nullptr) return nullptr;
    return state.recoverySignatures->Find("HomeDomain", "sms.db", table);
}

}  // namespace

TablePatterns messagePatterns(const ScanState& state, const std::string& table) {
    const auto signature = messageSignature(state, table);
    return signature != nullptr ? signature->TablePatterns : TablePatterns{};
}

TablePatterns narrowedMessagePatterns(const ScanState& state, const std::string& table,
                                      const std::string& version) {
    const auto signature = messageSignature(state, table);
    if (signature == nullptr) return {};
    signature->TablePatterns = signature->FindPatternsByVersion(version);
    return signature->TablePatterns;
}

}  // namespace salvor
