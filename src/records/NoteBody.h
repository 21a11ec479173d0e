#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "records/baseRecoveryObject.h"

namespace salvor {

struct Note;

/// The text of a note. `Owner` is the primary key of the note that owns it; `Content` is the text
/// as stored, which may hold HTML.
struct NoteBody : baseRecoveryObject {
    std::int64_t Id = 0;
    std::int32_t Owner = 0;
    salvor::Text Content;
    salvor::Text PlainContent;

    /// `Content` with "<div>" and "<br>" as line feeds and "&nbsp", without its semicolon, as a
    /// blank. Kept: nbsp-semicolon.
    std::string plainContent() const;
    /// A note titled by the start of `body`, which becomes its body.
    static std::shared_ptr<Note> ParseContentToGetNote(const std::shared_ptr<NoteBody>& body);

    template <class Self = NoteBody>
    static constexpr auto fields() {
        return std::tuple_cat(Self::baseRecoveryObject::fields(),
                              std::make_tuple(field("Id", &Self::Id), field("Owner", &Self::Owner),
                                              field("Content", &Self::Content),
                                              field("PlainContent", &Self::PlainContent)));
    }
};

}  // namespace salvor
