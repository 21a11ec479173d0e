#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "util/Text.h"

namespace salvor {

/// Finds the first of many phone numbers that equals a given one by `iPhoneNumberUtils::AreEqual`,
/// asked in both directions, so that a short number equals only itself on either side. Other
/// numbers are equal when one ends with the other: they stand in a tree by their characters from
/// the last to the first, and looking one up takes as long as it has characters, however many end
/// alike.
class PhoneIndex {
  public:
    /// Positions are added in growing order. An empty number is not added.
    void add(const Text& number, std::size_t position);
    /// The smallest position with an equal number.
    std::optional<std::size_t> find(const Text& number) const;

  private:
    static constexpr std::size_t kNone = SIZE_MAX;

    /// What the numbers below it have in common behind those of its parent.
    struct Node {
        std::string characters;     ///< from the last to the first
        std::size_t own = kNone;    ///< position of the number that ends here
        std::size_t least = kNone;  ///< smallest position here and below
        std::vector<std::size_t> children = {};
    };

    std::size_t childOf(std::size_t node, char first) const;
    /// Makes a node of the first `length` characters of `node`, with the rest below it.
    void split(std::size_t node, std::size_t length);
    void insert(std::string_view reversed, std::size_t position);
    std::size_t least(std::string_view reversed) const;

    std::vector<Node> nodes_{1};
    std::unordered_map<Text, std::size_t> short_;  ///< by the number as it stands
};

}  // namespace salvor
