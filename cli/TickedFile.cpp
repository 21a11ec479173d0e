#include "cli/TickedFile.h"

#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/Failure.h"
#include "scan/Categories.h"

namespace salvor::cli {
namespace {

using Json = nlohmann::json;

/// Where the JSON reader stopped, without its own error numbers.
std::string syntaxFault(const Json::parse_error& error) {
    return fmt::format("is not JSON (at byte {})", error.byte);
}

void addSerials(TickedSerials& ticked, const std::string& category, const Json& serials) {
    const auto code = categoryCode(category);
    if (!code || *code == 0) throw std::runtime_error("there is no category \"" + category + '"');
    if (!serials.is_array()) throw std::runtime_error('"' + category + "\" is not a list");
    auto& rows = ticked[*code];
    for (const auto& serial : serials) {
        if (!serial.is_number_unsigned() || serial.get<std::uint64_t>() == 0)
            throw std::runtime_error('"' + category + "\" holds what is no serial number");
        rows.insert(serial.get<std::size_t>());
    }
}

TickedSerials parse(std::istream& file) {
    // Nesting has no place in this file and is refused before it can grow.
    const auto shallow = [](int depth, Json::parse_event_t, Json&) {
        if (depth > 2) throw std::runtime_error("is nested too deeply");
        return true;
    };
    const auto root = Json::parse(file, shallow);
    if (!root.is_object()) throw std::runtime_error("is not a JSON object");
    TickedSerials ticked;
    for (const auto& [category, serials] : root.items()) addSerials(ticked, category, serials);
    return ticked;
}

}  // namespace

TickedSerials readTickedFile(const std::filesystem::path& path) {
    const auto refuse = [&path](const std::string& cause) -> TickedSerials {
        throw Failure(ExitStatus::BadArguments, fmt::format("{}: {}", path.string(), cause));
    };
    std::error_code ignored;
    std::ifstream file(path);
    if (!file || std::filesystem::is_directory(path, ignored)) return refuse("cannot be read");
    try {
        return parse(file);
    } catch (const Json::parse_error& error) {
        return refuse(syntaxFault(error));
    } catch (const Json::exception&) {
        return refuse("holds a number that is out of range");
    } catch (const std::runtime_error& error) {
        return refuse(error.what());
    }
}

}  // namespace salvor::cli
