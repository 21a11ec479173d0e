#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "records/CallHistory.h"
#include "records/ConversationContact.h"
#include "records/Field.h"
#include "records/ListRows.h"
#include "records/RecordOrigin.h"
#include "records/WhatsAppContact.h"
#include "report/JsonStream.h"
#include "util/DateUtils.h"
#include "util/SharedFlag.h"
#include "util/StringUtils.h"
#include "util/Text.h"

/// Records as JSON, by walking their `fields()`.
namespace salvor::json {

template <class Record>
void writeRecord(JsonStream& out, const Record& record);

inline void writeNull(JsonStream& out) {
    out.raw("null");
}
inline void writeValue(JsonStream& out, const Text& text) {
    text ? out.text(*text) : writeNull(out);
}
inline void writeValue(JsonStream& out, const std::string& text) {
    out.text(text);
}
template <class Number>
requires std::is_arithmetic_v<Number>
void writeValue(JsonStream& out, Number number) {
    out.number(number);
}
inline void writeValue(JsonStream& out, const SharedFlag& flag) {
    out.number(bool(flag));
}
inline void writeValue(JsonStream& out, const std::optional<Date>& date) {
    date ? out.text(DateUtils::DateTimeToString(*date)) : writeNull(out);
}
/// Raw bytes (a decoded picture) as hexadecimal text; null when there are none.
inline void writeValue(JsonStream& out, const std::vector<std::uint8_t>& bytes) {
    bytes.empty() ? writeNull(out) : out.text(StringUtils::NSDataToHex(bytes));
}
/// A number of a conversation, whether a bare text or an object, is its text.
inline void writeValue(JsonStream& out, const ConversationPhone& phone) {
    if (const auto* text = std::get_if<Text>(&phone)) return writeValue(out, *text);
    writeValue(out, std::get<ContactPhoneNumber>(phone).PhoneNumber);
}
inline void writeValue(JsonStream& out, const std::shared_ptr<Contact>& contact) {
    contact != nullptr ? writeValue(out, contact->FullName) : writeNull(out);
}
inline void writeValue(JsonStream& out, const std::weak_ptr<ConversationContact>& reference) {
    const auto conversation = reference.lock();
    conversation != nullptr ? out.number(conversation->ChatId) : writeNull(out);
}
inline void writeValue(JsonStream& out, const std::weak_ptr<WhatsAppContact>& reference) {
    const auto partner = reference.lock();
    partner != nullptr ? writeValue(out, partner->ZContactJID) : writeNull(out);
}
template <class Record>
requires requires {
    Record::fields();
}
void writeValue(JsonStream& out, const std::shared_ptr<Record>& record) {
    record != nullptr ? writeRecord(out, *record) : writeNull(out);
}
template <class Element>
void writeValue(JsonStream& out, const std::vector<Element>& elements) {
    out.raw("[");
    bool first = true;
    for (const Element& element : elements) {
        if (out.ended()) return;
        if (!first) out.raw(",");
        first = false;
        writeValue(out, element);
    }
    out.raw("]");
}

inline void writeOrigin(JsonStream& out, const RecordOrigin& origin) {
    out.raw("{\"database\":");
    out.text(origin.database.view());
    out.raw(",\"offset\":");
    out.number(origin.offset);
    out.raw(",\"page\":");
    out.number(origin.page);
    out.raw(",\"space\":");
    out.text(toString(origin.space));
    out.raw("}");
}

/// The members of a record's object; `first` is false from the first one on.
template <class Record>
void writeMembers(JsonStream& out, const Record& record, bool& first) {
    forEachField(record, [&](const char* name, const auto& value) {
        out.key(name, first);
        writeValue(out, value);
    });
    if constexpr (requires { record.Origin; }) {
        if (record.Origin) {
            out.key("origin", first);
            writeOrigin(out, *record.Origin);
        }
    }
}

template <class Record>
void writeRecord(JsonStream& out, const Record& record) {
    out.raw("{");
    bool first = true;
    writeMembers(out, record, first);
    out.raw("}");
}

}  // namespace salvor::json
