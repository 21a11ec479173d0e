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

    template <class Self = MessageAttachment>
    static constexpr auto fields() {
        return std::make_tuple(
            field("BackupThumbnailFilenamePath", &Self::BackupThumbnailFilenamePath),
            field("BackupFilenamePath", &Self::BackupFilenamePath),
            field("Filename", &Self::Filename), field("Transfername", &Self::Transfername),
            field("Created", &Self::Created));
    }
};

}  // namespace salvor
