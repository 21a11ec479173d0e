#include "carving/DataPosition.h"

#include <algorithm>
#include <iterator>

namespace salvor {

std::int32_t standardDataPosition(const Text& field, Bytes text) {
    constexpr std::int32_t kNoCorrection = -100;
    constexpr std::int32_t kDashIndex = 10;
    if (field != "ZStandZAid") return kNoCorrection;
    const auto dash = std::find(text.begin(), text.end(), std::uint8_t{'-'});
    // No text is so long that its index does not fit: regions end with their page.
    const auto index =
        dash == text.end() ? -1 : static_cast<std::int32_t>(std::distance(text.begin(), dash));
    return index - kDashIndex;
}

}  // namespace salvor
