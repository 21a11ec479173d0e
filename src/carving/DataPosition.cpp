#include "carving/DataPosition.h"

#include "util/dataUtils.h"

namespace salvor {

std::int32_t standardDataPosition(std::string_view field, Bytes text) {
    constexpr std::int32_t kNoCorrection = -100;
    constexpr std::int32_t kDashIndex = 10;
    if (field != "ZStandZAid") return kNoCorrection;
    // No text is so long that its index does not fit: regions end with their page.
    return static_cast<std::int32_t>(dataUtils::indexOfCharinData(text, '-')) - kDashIndex;
}

}  // namespace salvor
