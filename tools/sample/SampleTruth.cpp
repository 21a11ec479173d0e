#include "tools/sample/SampleTruth.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

#include "tools/sample/Digest.h"

namespace salvor {
namespace {

using Json = nlohmann::ordered_json;

Json toJson(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json();
}

Json toJson(const SqliteValue& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) return *integer;
    if (const auto* real = std::get_if<double>(&value)) return *real;
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* blob = std::get_if<SqliteBlob>(&value)) return blob->bytes.size();
    return nullptr;
}

Json toJson(const TruthRow& row) {
    Json object{{"database", row.database}, {"table", row.table},       {"rowId", row.rowId},
                {"guid", toJson(row.guid)}, {"text", toJson(row.text)}, {"date", row.date},
                {"handle", row.handle},     {"fromMe", row.fromMe}};
    if (!row.how.empty()) object["how"] = row.how;
    for (const auto& [name, value] : row.values) object[name] = toJson(value);
    return object;
}

Json toJson(const std::vector<TruthRow>& rows) {
    Json list = Json::array();
    for (const auto& row : rows) list.push_back(toJson(row));
    return list;
}

}  // namespace

std::vector<TruthRow> SampleTruth::of(const std::vector<TruthRow>& rows, std::string_view table) {
    std::vector<TruthRow> found;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(found),
                 [table](const TruthRow& row) { return row.table == table; });
    return found;
}

void SampleTruth::writeJson(const std::filesystem::path& file) const {
    const Json object{{"ios", version},
                      {"deviceName", deviceName},
                      {"uniqueDeviceID", uniqueDeviceID},
                      {"seed", seed},
                      {"pageSize", layout.pageSize},
                      {"autoVacuum", toString(layout.autoVacuum)},
                      {"writeAheadLog", layout.writeAheadLog},
                      {"secureDelete", layout.secureDelete},
                      {"deleted", toJson(deleted)},
                      {"live", toJson(live)}};
    writeWholeFile(file, object.dump(1) + "\n");
}

}  // namespace salvor
