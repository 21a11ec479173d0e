#include "cli/RecoverOutput.h"

#include "app/RecoverFile.h"
#include "cli/JsonText.h"
#include "util/StringUtils.h"

namespace salvor::cli {
namespace {

using json::JsonStream;

void writeValue(const deep::RecoveredValue& value, JsonStream& out) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) {
        out.number(*number);
    } else if (const auto* real = std::get_if<double>(&value)) {
        out.number(*real);
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        out.text(*text);
    } else if (const auto* raw = std::get_if<deep::RawBytes>(&value)) {
        out.raw("{\"hex\":\"" + StringUtils::ByteArrayToString(raw->bytes) + "\"}");
    } else {
        out.raw("null");
    }
}

/// Writes `items` with commas between them.
template <class Items, class Write>
void writeList(const Items& items, Write&& write, JsonStream& out) {
    bool first = true;
    for (const auto& item : items) {
        if (!first) out.raw(",");
        first = false;
        write(item);
    }
}

void writePlace(const deep::RowPlace& place, JsonStream& out) {
    bool first = true;
    out.raw("{");
    out.key("file", first);
    out.text(fileName(place.file));
    out.key("page", first);
    out.number(place.page);
    out.key("offset", first);
    out.number(place.offset);
    out.key("length", first);
    out.number(place.length);
    if (place.frame != 0) {
        out.key("frame", first);
        out.number(place.frame);
    }
    out.key("space", first);
    out.text(deep::toString(place.space));
    out.raw("}");
}

Json jsonOf(const deep::TableFacts& table) {
    return {{"table", table.name},      {"dropped", table.dropped}, {"live", table.live},
            {"deleted", table.deleted}, {"earlier", table.earlier}, {"fragments", table.fragments},
            {"certain", table.certain}, {"likely", table.likely},   {"possible", table.possible},
            {"rowsGone", table.gone}};
}

const char* vacuumOf(const deep::Facts& facts) {
    if (facts.incrementalVacuum) return "incremental";
    return facts.autoVacuum ? "full" : "none";
}

}  // namespace

void writeRow(const deep::Facts& facts, const deep::RecoveredRow& row, JsonStream& out) {
    const deep::TableFacts& table = facts.tables[row.table];
    const auto name = [&](std::size_t column) { out.text(table.columns[column]); };
    out.raw("{\"table\":");
    out.text(table.name);
    out.raw(",\"rowId\":");
    row.rowId ? out.number(*row.rowId) : out.raw("null");
    out.raw(",\"columns\":{");
    writeList(
        row.columns,
        [&](const deep::RecoveredColumn& column) {
            name(column.column);
            out.raw(":");
            writeValue(column.value, out);
        },
        out);
    out.raw("},\"state\":");
    out.text(deep::toString(row.state));
    out.raw(",\"confidence\":");
    out.text(deep::toString(row.confidence));
    out.raw(",\"reasons\":[");
    writeList(
        row.reasons, [&](const std::string& reason) { out.text(reason); }, out);
    out.raw("],\"missing\":[");
    writeList(row.missing, name, out);
    out.raw("],\"origins\":[");
    writeList(
        row.origins, [&](const deep::RowPlace& place) { writePlace(place, out); }, out);
    out.raw("]}\n");
}

std::string summaryOf(const deep::Facts& facts) {
    constexpr const char* kEncodings[] = {"", "UTF-8", "UTF-16LE", "UTF-16BE"};
    Json tables = Json::array();
    for (const auto& table : facts.tables)
        if (!table.internal) tables.push_back(jsonOf(table));
    const Json object = {{"pageSize", facts.pageSize},
                         {"pages", facts.pages},
                         {"freePages", facts.freePages},
                         {"encoding", kEncodings[static_cast<std::size_t>(facts.encoding)]},
                         {"autoVacuum", vacuumOf(facts)},
                         {"logFrames", facts.logFrames},
                         {"logFramesInUse", facts.logFramesInUse},
                         {"journalPages", facts.journalPages},
                         {"freeBytes", facts.freeBytes},
                         {"zeroBytes", facts.zeroBytes},
                         {"secureDelete", facts.secureDeleteSeen()},
                         {"cut", facts.cut},
                         {"tables", std::move(tables)},
                         {"facts", facts.sentences()}};
    return jsonLine(object);
}

}  // namespace salvor::cli
