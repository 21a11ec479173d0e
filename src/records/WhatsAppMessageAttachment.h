#pragma once

#include <cstdint>

#include "records/Field.h"
#include "util/Text.h"

namespace salvor {

/// The attachment of a WhatsApp message; the "Original" paths are those of the row.
struct WhatsAppMessageAttachment {
    bool Recovered = false;
    salvor::Text ZMediaLocalPath;
    salvor::Text OriginalZMediaLocalPath;
    salvor::Text ZThumbnailLocalPath;
    salvor::Text OriginalZThumbnailLocalPath;
    std::int64_t ZFileSize = 0;
    std::int64_t ZMovieDuration = 0;

    template <class Self = WhatsAppMessageAttachment>
    static constexpr auto fields() {
        return std::make_tuple(
            field("Recovered", &Self::Recovered), field("ZMediaLocalPath", &Self::ZMediaLocalPath),
            field("OriginalZMediaLocalPath", &Self::OriginalZMediaLocalPath),
            field("ZThumbnailLocalPath", &Self::ZThumbnailLocalPath),
            field("OriginalZThumbnailLocalPath", &Self::OriginalZThumbnailLocalPath),
            field("ZFileSize", &Self::ZFileSize), field("ZMovieDuration", &Self::ZMovieDuration));
    }
};

}  // namespace salvor
