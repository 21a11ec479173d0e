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

    static constexpr auto fields() {
        return std::tuple_cat(
            baseRecoveryObject::fields(),
            std::make_tuple(field("SlNo", &Note::SlNo), field("CreatedDate", &Note::CreatedDate),
                            field("ModificationDate", &Note::ModificationDate),
                            field("OriginalCreationDate", &Note::OriginalCreationDate),
                            field("OriginalModificationDate", &Note::OriginalModificationDate),
                            field("Title", &Note::Title), field("SortTitle", &Note::SortTitle),
                            field("Summary", &Note::Summary), field("GUID", &Note::GUID),
                            field("isChecked", &Note::isChecked),
                            field("noteBody", &Note::noteBody),
                            field("noteBodyId", &Note::noteBodyId)));
    }
};

}  // namespace salvor
