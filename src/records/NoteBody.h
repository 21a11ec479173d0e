#pragma once

#include <cstdint>

#include "records/baseRecoveryObject.h"

namespace salvor {

/// The body of a note; `Owner` is the row id of the note it belongs to.
struct NoteBody : baseRecoveryObject {
    std::int64_t Owner = 0;
    salvor::Text Content;
    salvor::Text ExternalContentRef;
    salvor::Text ExternalRepresentation;

    static constexpr auto fields() {
        return std::tuple_cat(
            baseRecoveryObject::fields(),
            std::make_tuple(field("Owner", &NoteBody::Owner), field("Content", &NoteBody::Content),
                            field("ExternalContentRef", &NoteBody::ExternalContentRef),
                            field("ExternalRepresentation", &NoteBody::ExternalRepresentation)));
    }
};

}  // namespace salvor
