#pragma once

#include "records/Field.h"
#include "util/Text.h"

namespace salvor {

/// The attachment of a message: names as stored, and where file and thumbnail lie in the backup.
struct MessageAttachment {
    salvor::Text BackupThumbnailFilenamePath;
    salvor::Text BackupFilenamePath;
    salvor::Text Filename;
    salvor::Text Transfername;
    salvor::Text Created;

    static constexpr auto fields() {
        return std::make_tuple(
            field("BackupThumbnailFilenamePath", &MessageAttachment::BackupThumbnailFilenamePath),
            field("BackupFilenamePath", &MessageAttachment::BackupFilenamePath),
            field("Filename", &MessageAttachment::Filename),
            field("Transfername", &MessageAttachment::Transfername),
            field("Created", &MessageAttachment::Created));
    }
};

}  // namespace salvor
