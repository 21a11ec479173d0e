#include "backup/keys/BackupKeys.h"

#include <utility>

#include "backup/keys/KeyWrap.h"

namespace salvor {

std::optional<Secret> BackupKeys::open(Bytes classAndKey) const {
    constexpr std::size_t kClassBytes = 4;
    if (classAndKey.size() <= kClassBytes) return std::nullopt;
    std::uint32_t protectionClass = 0;
    for (std::size_t i = kClassBytes; i > 0; --i)
        protectionClass = (protectionClass << 8) | classAndKey[i - 1];
    const auto found = classes_.find(protectionClass);
    if (found == classes_.end()) return std::nullopt;
    return unwrapKey(found->second.bytes(), classAndKey.subspan(kClassBytes));
}

UnlockedKeys unlock(const KeyBag& bag, Bytes password, const std::stop_token& stop,
                    const RoundsWatch& watch) {
    if (bag.rounds() > kMostRounds) return {Unlock::TooManyRounds, nullptr};
    const auto key = passwordKey(bag, password, stop, watch);
    if (stop.stop_requested()) return {Unlock::Cancelled, nullptr};
    if (!key) return {};
    std::map<std::uint32_t, Secret> classes;
    for (const auto& one : bag.classes) {
        if (!one.byPassword()) continue;
        const Bytes wrapped(reinterpret_cast<const std::uint8_t*>(one.key.data()), one.key.size());
        if (auto opened = unwrapKey(key->bytes(), wrapped))
            classes.insert_or_assign(one.protectionClass, std::move(*opened));
    }
    if (classes.empty()) return {};
    return {Unlock::Open, std::make_shared<const BackupKeys>(std::move(classes))};
}

}  // namespace salvor
