#include "report/ScanReport.h"

#include <sstream>
#include <utility>

#include "report/RecordJson.h"
#include "scan/Categories.h"

namespace salvor {
namespace {

/// Writes the outer objects and arrays, a record of a list to each line.
class Writer {
  public:
    Writer(std::ostream& out, const WritingReport& watch, std::size_t total)
        : out_(out, watch.stop), watch_(watch), total_(total) {}

    void open(const char* key, char bracket) {
        next(key);
        out_.raw({&bracket, 1});
        first_ = true;
        ++depth_;
    }
    void close(char bracket) {
        --depth_;
        if (!first_) newLine();
        out_.raw({&bracket, 1});
        first_ = false;
    }
    template <class Value>
    void value(const char* key, const Value& value) {
        next(key);
        json::writeValue(out_, value);
    }
    template <class Record>
    void record(const char* key, const Record& record) {
        next(key);
        json::writeRecord(out_, record);
    }
    void status(StatusCode code, const std::string& message) {
        next(nullptr);
        out_.raw("[");
        out_.number(static_cast<int>(code));
        out_.raw(",");
        out_.text(message);
        out_.raw("]");
    }
    template <class Row>
    void list(const char* key, const List<Row>& rows) {
        open(key, '[');
        for (const auto& row : rows) {
            if (out_.ended()) return;
            next(nullptr);
            // Rows are written whole; a record inside another one may be its name alone.
            row != nullptr ? json::writeRecord(out_, *row) : json::writeNull(out_);
            if (watch_.progress) watch_.progress(++done_, total_);
        }
        close(']');
    }
    /// Whether everything was written.
    bool finish() {
        out_.raw("\n");
        out_.flush();
        return !out_.ended();
    }

  private:
    void next(const char* key) {
        if (!first_) out_.raw(",");
        if (depth_ > 0) newLine();
        first_ = false;
        if (key == nullptr) return;
        out_.raw("\"");
        out_.raw(key);
        out_.raw("\": ");
    }
    void newLine() {
        constexpr std::string_view kDeepest = "\n        ";
        out_.raw(kDeepest.substr(0, 1 + 2 * depth_));
    }

    json::JsonStream out_;
    const WritingReport& watch_;
    std::size_t total_;
    std::size_t done_ = 0;
    std::size_t depth_ = 0;
    bool first_ = true;
};

/// Counts the rows that a `Writer` would write.
struct RowCount {
    std::size_t rows = 0;

    void open(const char*, char) {}
    void close(char) {}
    template <class Row>
    void list(const char*, const List<Row>& list) {
        rows += list.size();
    }
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
template <class Visitor>
void writeLists(Visitor& writer, const ScanState& state, int Places::*order,
                NamedList RowKind::*which) {
    for (const CategoryFacts* category : categoriesBy(order)) {
        for (const RowKind& kind : category->kinds) {
            if (!kind.listed) continue;
            const NamedList& list = kind.*which;
            withList(state, list, [&](const auto& rows) { writer.list(list.name, rows); });
        }
    }
}

template <class Visitor>
void writeLive(Visitor& writer, const ScanState& state) {
    writer.open("live", '{');
    writeLists(writer, state, &Places::liveKey, &RowKind::live);
    writer.list("MapContent", state.MapContent);
    writer.list("AccountContent", state.AccountContent);
    writer.list("ApplicationContent", state.ApplicationContent);
    writer.list("UserDictContent", state.UserDictContent);
    writer.close('}');
}

template <class Visitor>
void writeDeleted(Visitor& writer, const ScanState& state) {
    writer.open("deleted", '{');
    writeLists(writer, state, &Places::deletedKey, &RowKind::deleted);
    writer.close('}');
}

std::size_t rowsOf(const ScanState& state) {
    RowCount count;
    writeLive(count, state);
    writeDeleted(count, state);
    return count.rows + state.Conversations.size();
}

}  // namespace

nlohmann::ordered_json ScanReport::device(const DeviceInfo& device) {
    std::ostringstream text;
    json::JsonStream out(text);
    json::writeRecord(out, device);
    out.flush();
    return nlohmann::ordered_json::parse(text.str());
}

std::string ScanReport::text(const ScanState& state) {
    std::ostringstream text;
    write(state, text);
    return std::move(text).str();
}

bool ScanReport::write(const ScanState& state, std::ostream& out, const WritingReport& watch) {
    Writer writer(out, watch, rowsOf(state));
    writer.open(nullptr, '{');
    writer.record("device", state.deviceInfo);
    writeSource(writer, state);
    writeCounts(writer, state);
    writeLive(writer, state);
    writeDeleted(writer, state);
    writer.list("conversations", state.Conversations);
    writer.open("status", '[');
    for (const auto& [code, message] : state.statusHistory()) writer.status(code, message);
    writer.close(']');
    writer.close('}');
    return writer.finish();
}

}  // namespace salvor
