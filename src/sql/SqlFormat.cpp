#include "sql/SqlFormat.h"

#include <array>
#include <cmath>
#include <fmt/format.h>

#include "util/StringUtils.h"

namespace salvor {
namespace {

std::int64_t toInteger(const SqlArgument& argument) {
    if (const auto* number = std::get_if<std::int64_t>(&argument)) return *number;
    const auto* real = std::get_if<double>(&argument);
    return real != nullptr && std::abs(*real) < 9e18 ? static_cast<std::int64_t>(*real) : 0;
}

std::string anyText(const SqlArgument& argument) {
    if (const auto* text = std::get_if<Text>(&argument)) return text->value_or("(null)");
    if (const auto* number = std::get_if<std::int64_t>(&argument))
        return fmt::format("{}", *number);
    return StringUtils::numberToText(std::get<double>(argument));
}

std::string shortText(const SqlArgument& argument) {
    return fmt::format("{}", static_cast<std::int32_t>(toInteger(argument)));
}

std::string longText(const SqlArgument& argument) {
    return fmt::format("{}", toInteger(argument));
}

struct Placeholder {
    std::string_view text;
    std::string (*render)(const SqlArgument&);
};

constexpr std::array<Placeholder, 4> kPlaceholders = {
    {{"%@", anyText}, {"%d", shortText}, {"%ld", longText}, {"%lld", longText}}};

const Placeholder* placeholderAt(std::string_view rest) {
    for (const auto& placeholder : kPlaceholders) {
        if (rest.substr(0, placeholder.text.size()) == placeholder.text) return &placeholder;
    }
    return nullptr;
}

}  // namespace

std::string formatSql(std::string_view format, std::initializer_list<SqlArgument> arguments) {
    std::string sql;
    const auto* argument = arguments.begin();
    while (!format.empty()) {
        const auto* placeholder = placeholderAt(format);
        if (placeholder != nullptr && argument != arguments.end()) {
            sql += placeholder->render(*argument++);
            format.remove_prefix(placeholder->text.size());
            continue;
        }
        const bool percent = format.substr(0, 2) == "%%";
        sql += format.front();
        format.remove_prefix(percent ? 2 : 1);
    }
    return sql;
}

}  // namespace salvor
