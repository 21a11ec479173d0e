#include "cli/OptionTable.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/Failure.h"

namespace salvor::cli {
namespace {

constexpr std::size_t kColumns = 80;

std::string shownName(const OptionRow& option) {
    return option.value == nullptr ? option.name : std::string(option.name) + ' ' + option.value;
}

/// Appends `words` to `text`, breaking lines before column 80; further lines begin with `indent`
/// blanks. `column` is where `text` stands.
void appendWrapped(std::string& text, std::size_t column, std::size_t indent,
                   std::span<const std::string> words) {
    bool first = true;
    for (const auto& word : words) {
        if (!first && column + 1 + word.size() > kColumns) {
            text += '\n' + std::string(indent, ' ');
            column = indent;
        } else if (!first) {
            text += ' ';
            ++column;
        }
        text += word;
        column += word.size();
        first = false;
    }
    text += '\n';
}

std::vector<std::string> wordsOf(std::string_view text) {
    std::vector<std::string> words;
    while (!text.empty()) {
        const auto end = std::min(text.find(' '), text.size());
        if (end > 0) words.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

std::string helpRow(const std::string& name, std::size_t width, const char* help) {
    std::string row = "  " + name + std::string(width - name.size() + 2, ' ');
    appendWrapped(row, row.size(), width + 4, wordsOf(help));
    return row;
}

void declareOptions(CLI::App& parser, const CommandTable& table, Arguments& given) {
    const auto store = [&given](const char* name) {
        return [&given, name](const std::string& value) { given.set(name, value); };
    };
    for (const auto& argument : table.arguments)
        parser.add_option_function<std::string>(argument.name, store(argument.name))->required();
    for (const auto& option : table.options) {
        if (option.value == nullptr) {
            parser.add_flag_callback(option.name,
                                     [&given, name = option.name] { given.set(name, ""); });
        } else if (option.repeats) {
            parser
                .add_option_function<std::vector<std::string>>(
                    option.name,
                    [&given, name = option.name](const std::vector<std::string>& values) {
                        for (const auto& value : values) given.add(name, value);
                    })
                ->type_name(option.value)
                ->allow_extra_args(false);
        } else {
            parser.add_option_function<std::string>(option.name, store(option.name))
                ->type_name(option.value)
                ->required(option.required);
        }
    }
}

void checkNotEmpty(const CommandTable& table, const Arguments& given) {
    const auto check = [&given](const char* name) {
        if (given.has(name) && given[name].empty())
            throw Failure(ExitStatus::BadArguments, std::string(name) + " is empty");
    };
    for (const auto& argument : table.arguments) check(argument.name);
    for (const auto& option : table.options)
        if (option.value != nullptr && option.name != std::string_view("--suffix"))
            check(option.name);
}

}  // namespace

std::optional<std::string> Arguments::value(std::string_view name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? std::nullopt : std::optional(found->second.front());
}

std::vector<std::string> Arguments::all(std::string_view name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? std::vector<std::string>() : found->second;
}

const std::string& Arguments::operator[](std::string_view name) const {
    static const std::string kNone;
    const auto found = values_.find(name);
    return found == values_.end() ? kNone : found->second.front();
}

std::optional<Arguments> parseArguments(const CommandTable& table,
                                        std::span<const std::string> words) {
    Arguments given;
    CLI::App parser;
    parser.set_help_flag("-h,--help");
    declareOptions(parser, table, given);
    try {
        parser.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    } catch (const CLI::CallForHelp&) {
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw Failure(ExitStatus::BadArguments, error.what());
    }
    checkNotEmpty(table, given);
    return given;
}

std::string usageOf(const CommandTable& table) {
    std::vector<std::string> words;
    for (const auto& argument : table.arguments) words.emplace_back(argument.name);
    for (const auto& option : table.options) {
        const auto name = shownName(option);
        words.push_back((option.required ? name : '[' + name + ']') +
                        (option.repeats ? "..." : ""));
    }
    std::string text = std::string("usage: salvor ") + table.name + ' ';
    const auto column = text.size();
    appendWrapped(text, column, column, words);
    return text;
}

std::string helpOf(const CommandTable& table) {
    std::size_t width = std::string_view("-h, --help").size();
    for (const auto& argument : table.arguments)
        width = std::max(width, std::string_view(argument.name).size());
    for (const auto& option : table.options) width = std::max(width, shownName(option).size());

    std::string text = usageOf(table) + '\n';
    appendWrapped(text, 0, 0, wordsOf(table.summary));
    if (!table.arguments.empty()) text += "\narguments:\n";
    for (const auto& argument : table.arguments)
        text += helpRow(argument.name, width, argument.help);
    text += "\noptions:\n";
    for (const auto& option : table.options) text += helpRow(shownName(option), width, option.help);
    text += helpRow("-h, --help", width, "show this help");
    if (*table.notes != '\0') {
        text += '\n';
        appendWrapped(text, 0, 0, wordsOf(table.notes));
    }
    return text;
}

}  // namespace salvor::cli
