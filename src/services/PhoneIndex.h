#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "util/Text.h"

namespace salvor {

/// Finds the first of many phone numbers that equals a given one by `iPhoneNumberUtils::AreEqual`,
/// asked in both directions, so that a short number equals only itself on either side. Equal
/// numbers end alike, so only those with the same last characters are compared.
class PhoneIndex {
  public:
    /// Positions are added in growing order. An empty number is not added.
    void add(const Text& number, std::size_t position);
    /// The smallest position with an equal number.
    std::optional<std::size_t> find(const Text& number) const;

  private:
    struct Known {
        std::string normalised;
        std::size_t position;
    };

    std::unordered_map<std::string, std::vector<Known>> byEnding_;
    std::unordered_set<std::string> known_;        ///< normalised
    std::unordered_map<Text, std::size_t> short_;  ///< by the number as it stands
};

}  // namespace salvor
