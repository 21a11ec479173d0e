#include "services/PhoneIndex.h"

#include "util/StringUtils.h"
#include "util/iPhoneNumberUtils.h"

namespace salvor {

std::string PhoneIndex::keyOf(const Text& number) {
    // Numbers that are equal have at least four characters in common, or are the same text.
    constexpr std::size_t kCommonEnding = 4;
    const auto normalised = StringUtils::RemoveSpacesAndPhoneBracketZeros(number);
    if (normalised.size() <= kCommonEnding) return normalised;
    return normalised.substr(normalised.size() - kCommonEnding);
}

void PhoneIndex::add(const Text& number, std::size_t position) {
    if (!StringUtils::IsNullOrEmpty(number))
        byEnding_[keyOf(number)].emplace_back(*number, position);
}

std::optional<std::size_t> PhoneIndex::find(const Text& number) const {
    if (StringUtils::IsNullOrEmpty(number)) return std::nullopt;
    const auto bucket = byEnding_.find(keyOf(number));
    if (bucket == byEnding_.end()) return std::nullopt;
    for (const auto& [known, position] : bucket->second)
        if (iPhoneNumberUtils::AreEqual(number, known) &&
            iPhoneNumberUtils::AreEqual(known, number))
            return position;
    return std::nullopt;
}

}  // namespace salvor
