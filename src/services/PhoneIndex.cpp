#include "services/PhoneIndex.h"

#include <algorithm>

#include "util/StringUtils.h"
#include "util/Utf8.h"

namespace salvor {
namespace {

/// From this length on numbers are compared by their endings, below as they stand.
constexpr std::size_t kShortest = 4;

/// Long numbers that are equal have at least this many bytes in common.
std::string endingOf(const std::string& normalised) {
    return normalised.substr(normalised.size() - kShortest);
}

bool oneEndsWithTheOther(const std::string& first, const std::string& second) {
    return first.size() >= second.size() ? first.ends_with(second) : second.ends_with(first);
}

}  // namespace

void PhoneIndex::add(const Text& number, std::size_t position) {
    if (StringUtils::IsNullOrEmpty(number)) return;
    auto normalised = StringUtils::RemoveSpacesAndPhoneBracketZeros(number);
    if (utf16Length(normalised) < kShortest) {
        short_.try_emplace(number, position);
    } else if (known_.insert(normalised).second) {
        auto& bucket = byEnding_[endingOf(normalised)];
        bucket.push_back({std::move(normalised), position});
    }
}

std::optional<std::size_t> PhoneIndex::find(const Text& number) const {
    if (StringUtils::IsNullOrEmpty(number)) return std::nullopt;
    const auto normalised = StringUtils::RemoveSpacesAndPhoneBracketZeros(number);
    if (utf16Length(normalised) < kShortest) {
        const auto found = short_.find(number);
        return found == short_.end() ? std::nullopt : std::optional(found->second);
    }
    const auto bucket = byEnding_.find(endingOf(normalised));
    if (bucket == byEnding_.end()) return std::nullopt;
    const auto found = std::find_if(
        bucket->second.begin(), bucket->second.end(),
        [&](const Known& known) { return oneEndsWithTheOther(normalised, known.normalised); });
    return found == bucket->second.end() ? std::nullopt : std::optional(found->position);
}

}  // namespace salvor
