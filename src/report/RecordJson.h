#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "records/CallHistory.h"
#include "records/ConversationContact.h"
#include "records/Field.h"
#include "records/ListRows.h"
#include "records/RecordOrigin.h"
#include "records/WhatsAppContact.h"
#include "util/DateUtils.h"
#include "util/StringUtils.h"
#include "util/Text.h"

/// Records as JSON values, by walking their `fields()`.
namespace salvor::json {

using Json = nlohmann::ordered_json;

template <class Record>
Json fromRecord(const Record& record);

inline Json fromValue(const Text& text) {
    return text ? Json(*text) : Json(nullptr);
}
inline Json fromValue(const std::string& text) {
    return text;
}
template <class Number>
requires std::is_arithmetic_v<Number> Json fromValue(Number number) {
    return number;
}
inline Json fromValue(const std::optional<Date>& date) {
    return date ? Json(DateUtils::DateTimeToString(*date)) : Json(nullptr);
}
/// Raw bytes (a decoded picture) as hexadecimal text; null when there are none.
inline Json fromValue(const std::vector<std::uint8_t>& bytes) {
    return bytes.empty() ? Json(nullptr) : Json(StringUtils::NSDataToHex(bytes));
}
/// A number of a conversation, whether a bare text or an object, is its text.
inline Json fromValue(const ConversationPhone& phone) {
    if (const auto* text = std::get_if<std::string>(&phone)) return *text;
    return fromValue(std::get<ContactPhoneNumber>(phone).PhoneNumber);
}
inline Json fromValue(const std::shared_ptr<Contact>& contact) {
    return contact != nullptr ? fromValue(contact->FullName) : Json(nullptr);
}
inline Json fromValue(const std::weak_ptr<ConversationContact>& reference) {
    const auto conversation = reference.lock();
    return conversation != nullptr ? Json(conversation->ChatId) : Json(nullptr);
}
inline Json fromValue(const std::weak_ptr<WhatsAppContact>& reference) {
    const auto partner = reference.lock();
    return partner != nullptr ? fromValue(partner->ZContactJID) : Json(nullptr);
}
template <class Record>
requires requires {
    Record::fields();
}
Json fromValue(const std::shared_ptr<Record>& record) {
    return record != nullptr ? fromRecord(*record) : Json(nullptr);
}
template <class Element>
Json fromValue(const std::vector<Element>& elements) {
    Json array = Json::array();
    for (const Element& element : elements) array.push_back(fromValue(element));
    return array;
}

inline Json fromOrigin(const RecordOrigin& origin) {
    return {{"database", origin.database.view()},
            {"offset", origin.offset},
            {"page", origin.page},
            {"space", toString(origin.space)}};
}

template <class Record>
Json fromRecord(const Record& record) {
    Json object = Json::object();
    forEachField(record, [&](const char* name, const auto& value) {
        object.emplace(name, fromValue(value));
    });
    if constexpr (requires { record.Origin; }) {
        if (record.Origin) object["origin"] = fromOrigin(*record.Origin);
    }
    return object;
}

}  // namespace salvor::json
