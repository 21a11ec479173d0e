#pragma once

#include <fmt/format.h>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "records/Field.h"
#include "util/Text.h"

namespace salvor {

template <class Record>
std::string told(const Record& record);

/// A field's value: "-" for what is absent, {...} for a record, [... + ...] for a list.
template <class Value>
std::string toldValue(const Value& value) {
    if constexpr (std::is_same_v<Value, Text>) {
        return value.value_or("-");
    } else if constexpr (std::is_arithmetic_v<Value> || std::is_same_v<Value, std::string>) {
        return fmt::format("{}", value);
    } else if constexpr (requires { value->secondsSinceReference; }) {
        return value ? fmt::format("{}", value->secondsSinceReference) : "-";
    } else if constexpr (requires { value->fields(); }) {
        return value ? "{" + told(*value) + "}" : "-";
    } else if constexpr (requires { value.valueless_by_exception(); }) {
        return std::visit([](const auto& one) { return toldValue(one); }, value);
    } else if constexpr (requires { Value::fields(); }) {
        return "{" + told(value) + "}";
    } else if constexpr (requires { value.begin(); }) {
        std::string all;
        for (const auto& one : value) all += (all.empty() ? "" : " + ") + toldValue(one);
        return "[" + all + "]";
    } else {
        return "";
    }
}

/// The fields in which a record differs from a new one, "Name=value|Name=value" in the order of
/// its declaration: what was filled and, as much, what was not.
template <class Record>
std::string told(const Record& record) {
    const Record fresh{};
    std::string text;
    const auto tell = [&](const auto& field) {
        const std::string value = toldValue(record.*(field.member));
        if (value == toldValue(fresh.*(field.member))) return;
        text += (text.empty() ? "" : "|") + std::string(field.name) + "=" + value;
    };
    std::apply([&](const auto&... fields) { (tell(fields), ...); }, Record::fields());
    return text;
}

/// Each row of a list.
template <class List>
std::vector<std::string> toldAll(const List& rows) {
    std::vector<std::string> all;
    for (const auto& row : rows) all.push_back(told(*row));
    return all;
}

/// "a|b|c", "-" for what is absent.
inline std::string joined(const std::vector<Text>& texts) {
    std::string line;
    for (const auto& text : texts) line += (line.empty() ? "" : "|") + text.value_or("-");
    return line;
}

/// One text field of each row.
template <class List, class Record>
std::vector<std::string> textsOf(const List& rows, Text Record::*member) {
    std::vector<std::string> texts;
    for (const auto& row : rows)
        texts.push_back((dynamic_cast<const Record&>(*row).*member).value_or("-"));
    return texts;
}

}  // namespace salvor
