#include "records/NoteBody.h"

#include "records/Note.h"
#include "util/StringUtils.h"
#include "util/Utf8.h"

namespace salvor {

std::string NoteBody::plainContent() const {
    auto text = StringUtils::replaceAll(Content.value_or(""), "<div>", "\n");
    text = StringUtils::replaceAll(text, "&nbsp", " ");
    return StringUtils::replaceAll(text, "<br>", "\n");
}

std::shared_ptr<Note> NoteBody::ParseContentToGetNote(const std::shared_ptr<NoteBody>& body) {
    auto note = std::make_shared<Note>();
    note->Recovered = body->Recovered;
    note->noteBody = body;
    if (!body->Content) return note;
    const std::string_view content = *body->Content;
    note->Title = utf16Length(content) < 9 ? body->Content
                                           : std::string(utf16Substring(content, 0, 7)) + "...";
    return note;
}

}  // namespace salvor
