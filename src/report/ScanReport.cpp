#include "report/ScanReport.h"

#include <iterator>

#include "report/RecordJson.h"
#include "scan/Categories.h"

namespace salvor {
namespace {

using json::Json;

// No text should hold invalid UTF-8 here; one that does must not cost the whole report.
std::string dump(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// Writes the outer objects and arrays by hand and each record through the JSON library.
class Writer {
  public:
    void open(const char* key, char bracket) {
        next(key);
        text_ += bracket;
        first_ = true;
        ++depth_;
    }
    void close(char bracket) {
        --depth_;
        if (!first_) newLine();
        text_ += bracket;
        first_ = false;
    }
    void value(const char* key, const Json& json) {
        next(key);
        text_ += dump(json);
    }
    template <class Row>
    void list(const char* key, const List<Row>& rows) {
        open(key, '[');
        // Rows are written whole; a record inside another one may be its name alone.
        for (const auto& row : rows)
            value(nullptr, row != nullptr ? json::fromRecord(*row) : json::Json(nullptr));
        close(']');
    }
    std::string finish() && { return std::move(text_) + "\n"; }

  private:
    void next(const char* key) {
        if (!first_) text_ += ',';
        if (depth_ > 0) newLine();
        first_ = false;
        if (key != nullptr) text_.append("\"").append(key).append("\": ");
    }
    void newLine() { text_.append("\n").append(2 * depth_, ' '); }

    std::string text_;
    std::size_t depth_ = 0;
    bool first_ = true;
};

void writeSource(Writer& writer, const ScanState& state) {
    writer.open("source", '{');
    writer.value("backup", state.BACKUP_DIRECTORY);
    writer.open("databases", '{');
    for (const NamedDatabase& database : databaseNames())
        writer.value(database.name, state.*database.field);
    writer.close('}');
    writer.close('}');
}

void writeCounts(Writer& writer, const ScanState& state) {
    writer.open("counts", '{');
    for (const CategoryFacts& category : categories()) {
        for (const RowKind& kind : category.kinds) {
            for (const NamedCounter& counter : {kind.liveCount, kind.deletedCount})
                writer.value(counter.name, (state.*counter.field).load());
        }
    }
    writer.close('}');
}

/// The live or the deleted lists of the categories.
void writeLists(Writer& writer, const ScanState& state, int Places::*order,
                NamedList RowKind::*which) {
    for (const CategoryFacts* category : categoriesBy(order)) {
        for (const RowKind& kind : category->kinds) {
            if (!kind.listed) continue;
            const NamedList& list = kind.*which;
            withList(state, list, [&](const auto& rows) { writer.list(list.name, rows); });
        }
    }
}

void writeLive(Writer& writer, const ScanState& state) {
    writer.open("live", '{');
    writeLists(writer, state, &Places::liveKey, &RowKind::live);
    writer.list("MapContent", state.MapContent);
    writer.list("AccountContent", state.AccountContent);
    writer.list("ApplicationContent", state.ApplicationContent);
    writer.list("UserDictContent", state.UserDictContent);
    writer.close('}');
}

void writeDeleted(Writer& writer, const ScanState& state) {
    writer.open("deleted", '{');
    writeLists(writer, state, &Places::deletedKey, &RowKind::deleted);
    writer.close('}');
}

}  // namespace

nlohmann::ordered_json ScanReport::device(const DeviceInfo& device) {
    return json::fromRecord(device);
}

std::string ScanReport::text(const ScanState& state) {
    Writer writer;
    writer.open(nullptr, '{');
    writer.value("device", device(state.deviceInfo));
    writeSource(writer, state);
    writeCounts(writer, state);
    writeLive(writer, state);
    writeDeleted(writer, state);
    writer.list("conversations", state.Conversations);
    writer.open("status", '[');
    for (const auto& [code, message] : state.statusHistory()) {
        writer.value(nullptr, Json::array({code, message}));
    }
    writer.close(']');
    writer.close('}');
    return std::move(writer).finish();
}

}  // namespace salvor
