#include "services/PhoneIndex.h"

#include <algorithm>

#include "util/StringUtils.h"
#include "util/Utf8.h"

namespace salvor {
namespace {

/// From this length on numbers are compared by their endings, below as they stand.
constexpr std::size_t kShortest = 4;

std::string reversed(const std::string& text) {
    return {text.rbegin(), text.rend()};
}

std::size_t commonLength(std::string_view a, std::string_view b) {
    return static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first -
                                    a.begin());
}

}  // namespace

void PhoneIndex::add(const Text& number, std::size_t position) {
    if (StringUtils::IsNullOrEmpty(number)) return;
    const auto normalised = StringUtils::RemoveSpacesAndPhoneBracketZeros(number);
    if (utf16Length(normalised) < kShortest)
        short_.try_emplace(number, position);
    else
        insert(reversed(normalised), position);
}

std::optional<std::size_t> PhoneIndex::find(const Text& number) const {
    if (StringUtils::IsNullOrEmpty(number)) return std::nullopt;
    const auto normalised = StringUtils::RemoveSpacesAndPhoneBracketZeros(number);
    if (utf16Length(normalised) < kShortest) {
        const auto found = short_.find(number);
        return found == short_.end() ? std::nullopt : std::optional(found->second);
    }
    const auto found = least(reversed(normalised));
    return found == kNone ? std::nullopt : std::optional(found);
}

std::size_t PhoneIndex::childOf(std::size_t node, char first) const {
    for (const std::size_t child : nodes_[node].children)
        if (nodes_[child].characters.front() == first) return child;
    return kNone;
}

void PhoneIndex::split(std::size_t node, std::size_t length) {
    Node rest = nodes_[node];
    rest.characters.erase(0, length);
    nodes_[node].characters.resize(length);
    nodes_[node].own = kNone;
    nodes_[node].children = {nodes_.size()};
    nodes_.push_back(std::move(rest));
}

void PhoneIndex::insert(std::string_view rest, std::size_t position) {
    std::size_t node = 0;
    while (!rest.empty()) {
        const std::size_t child = childOf(node, rest.front());
        if (child == kNone) {
            nodes_[node].children.push_back(nodes_.size());
            nodes_.push_back({std::string(rest), position, position});
            return;
        }
        const std::size_t common = commonLength(nodes_[child].characters, rest);
        if (common < nodes_[child].characters.size()) split(child, common);
        rest.remove_prefix(common);
        node = child;
    }
    nodes_[node].own = std::min(nodes_[node].own, position);
}

std::size_t PhoneIndex::least(std::string_view rest) const {
    std::size_t found = kNone;
    for (std::size_t node = 0; !rest.empty();) {
        node = childOf(node, rest.front());
        if (node == kNone) return found;
        const std::string& characters = nodes_[node].characters;
        const std::size_t common = commonLength(characters, rest);
        if (common == rest.size()) return std::min(found, nodes_[node].least);
        if (common < characters.size()) return found;
        found = std::min(found, nodes_[node].own);
        rest.remove_prefix(common);
    }
    return found;
}

}  // namespace salvor
