#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace salvor::cli {

/// An argument that a command takes by position; each must be given.
struct ArgumentRow {
    const char* name;
    const char* help;
};

/// An option of a command: "--export", the name of its value ("DIR", null for a flag) and help.
struct OptionRow {
    const char* name;
    const char* value;
    const char* help;
    bool required = false;
    bool repeats = false;  ///< may be given several times
};

/// What a command is called and takes, as data: parsing, usage and help are made from it.
struct CommandTable {
    const char* name;
    const char* summary;
    std::vector<ArgumentRow> arguments;
    std::vector<OptionRow> options;
    const char* notes = "";  ///< a paragraph at the end of the help
};

/// The values given on a command line, by the name that the table has for them.
class Arguments {
  public:
    bool has(std::string_view name) const { return values_.find(name) != values_.end(); }
    std::optional<std::string> value(std::string_view name) const;
    /// The value of an argument or a required option.
    const std::string& operator[](std::string_view name) const;

    /// Every value of an option that repeats, in their order.
    std::vector<std::string> all(std::string_view name) const;

    void set(const std::string& name, std::string value) { values_[name] = {std::move(value)}; }
    void add(const std::string& name, std::string value) {
        values_[name].push_back(std::move(value));
    }

  private:
    std::map<std::string, std::vector<std::string>, std::less<>> values_;
};

/// Reads the words after the command's name. Throws `Failure` (bad arguments); gives nothing when
/// help is asked for.
std::optional<Arguments> parseArguments(const CommandTable& table,
                                        std::span<const std::string> words);

/// "usage: salvor scan BACKUP [--category C] ...", wrapped at 80 columns.
std::string usageOf(const CommandTable& table);
std::string helpOf(const CommandTable& table);

}  // namespace salvor::cli
