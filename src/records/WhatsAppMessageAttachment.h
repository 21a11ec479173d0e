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

    static constexpr auto fields() {
        return std::make_tuple(
            field("Recovered", &WhatsAppMessageAttachment::Recovered),
            field("ZMediaLocalPath", &WhatsAppMessageAttachment::ZMediaLocalPath),
            field("OriginalZMediaLocalPath", &WhatsAppMessageAttachment::OriginalZMediaLocalPath),
            field("ZThumbnailLocalPath", &WhatsAppMessageAttachment::ZThumbnailLocalPath),
            field("OriginalZThumbnailLocalPath",
                  &WhatsAppMessageAttachment::OriginalZThumbnailLocalPath),
            field("ZFileSize", &WhatsAppMessageAttachment::ZFileSize),
            field("ZMovieDuration", &WhatsAppMessageAttachment::ZMovieDuration));
    }
};

}  // namespace salvor
