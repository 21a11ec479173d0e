#include "recovery/SignatureUse.h"

namespace salvor {

std::shared_ptr<SQLiteSignature> findSignature(const ScanState& state, const SignatureKey& key) {
    if (state.recoverySignatures == nullptr) return nullptr;
    return state.recoverySignatures->Find(std::string(key.domain), std::string(key.database),
                                          std::string(key.table));
}

TablePatterns patternsOf(const ScanState& state, const SignatureKey& key) {
    const auto signature = findSignature(state, key);
    return signature ? signature->TablePatterns : TablePatterns{};
}

}  // namespace salvor
