#pragma once

#include <cstdint>
#include <memory>

#include "records/NoteBody.h"

namespace salvor {

/// One note, live or carved; notes are their own list rows.
struct Note : baseRecoveryObject {
    std::int32_t SlNo = 0;
    salvor::Text CreatedDate;
    salvor::Text ModificationDate;
    double OriginalCreationDate = 0;
    double OriginalModificationDate = 0;
    salvor::Text Title;
    salvor::Text SortTitle;
    salvor::Text Summary;
    salvor::Text GUID;
    std::int32_t isChecked = 0;
    std::shared_ptr<NoteBody> noteBody;
    std::int64_t noteBodyId = 0;

    template <class Self = Note>
    static constexpr auto fields() {
        return std::tuple_cat(
            Self::baseRecoveryObject::fields(),
            std::make_tuple(field("SlNo", &Self::SlNo), field("CreatedDate", &Self::CreatedDate),
                            field("ModificationDate", &Self::ModificationDate),
                            field("OriginalCreationDate", &Self::OriginalCreationDate),
                            field("OriginalModificationDate", &Self::OriginalModificationDate),
                            field("Title", &Self::Title), field("SortTitle", &Self::SortTitle),
                            field("Summary", &Self::Summary), field("GUID", &Self::GUID),
                            field("isChecked", &Self::isChecked),
                            field("noteBody", &Self::noteBody),
                            field("noteBodyId", &Self::noteBodyId)));
    }
};

}  // namespace salvor
