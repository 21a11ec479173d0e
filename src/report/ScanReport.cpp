#include "report/ScanReport.h"

#include <ctime>
#include <fmt/chrono.h>
#include <sstream>
#include <utility>

#include "report/LiveTwins.h"
#include "report/RecordJson.h"
#include "scan/Categories.h"
#include "util/Sha256.h"
#include "util/TimeZoneName.h"

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
        // Rows are written whole; a record inside another one may be its name alone.
        eachRow(key, rows, [this](const Row& row, std::size_t) { json::writeRecord(out_, row); });
    }
    /// Deleted rows, each with the serial number of the live row that is the same.
    template <class Row>
    void deletedList(const char* key, const List<Row>& rows, const List<Row>& live) {
        const auto twins = liveTwins(live, rows);
        eachRow(key, rows, [&](const Row& row, std::size_t index) {
            out_.raw("{");
            bool first = true;
            json::writeMembers(out_, row, first);
            out_.key("alsoLive", first);
            twins[index] > 0 ? out_.number(twins[index]) : json::writeNull(out_);
            out_.raw("}");
        });
    }
    /// What became of a database; its digest is counted here.
    void file(const ScanState& state, const FileOutcome& outcome) {
        const StoredFile& facts = kStoredFiles[static_cast<std::size_t>(outcome.file)];
        const auto digest = outcome.present ? digestOf(state, facts.name) : std::nullopt;
        next(nullptr);
        out_.raw("{");
        bool first = true;
        const auto member = [&](const char* key, const auto& value) {
            out_.key(key, first);
            json::writeValue(out_, value);
        };
        member("category", Text(factsOf(outcome.category).word));
        member("storedName", Text(facts.name));
        member("domain", Text(facts.domain));
        member("path", Text(facts.path));
        out_.key("size", first);
        outcome.present ? out_.number(outcome.size) : json::writeNull(out_);
        member("sha256", digest ? Text(*digest) : Text());
        member("read", Text(toString(outcome.outcome)));
        member("reason", outcome.reason.empty() ? Text() : Text(outcome.reason));
        out_.raw("}");
    }
    /// Whether everything was written.
    bool finish() {
        out_.raw("\n");
        out_.flush();
        return !out_.ended();
    }

  private:
    template <class Row, class Write>
    void eachRow(const char* key, const List<Row>& rows, Write&& write) {
        open(key, '[');
        for (std::size_t index = 0; index < rows.size(); ++index) {
            if (out_.ended()) return;
            next(nullptr);
            rows[index] != nullptr ? write(*rows[index], index) : json::writeNull(out_);
            if (watch_.progress) watch_.progress(++done_, total_);
        }
        close(']');
    }
    std::optional<std::string> digestOf(const ScanState& state, const char* storedName) const {
        const auto file = state.backupFiles()->open(storedName);
        return file ? sha256OfFile(file.path, watch_.stop) : std::nullopt;
    }
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
    template <class Row>
    void deletedList(const char*, const List<Row>& list, const List<Row>&) {
        rows += list.size();
    }
};

void writeRun(Writer& writer, const ScanState& state) {
    const ScanRun& run = state.run;
    std::vector<std::string> asked;
    for (const CategoryFacts& category : categories())
        if (run.dataType == kEverything || run.dataType == codeOf(category.category))
            asked.emplace_back(category.word);
    const auto started = static_cast<std::time_t>(run.startedAt);
    writer.value("format", ScanReport::kFormat);
    writer.value("program", Text("salvor " SALVOR_VERSION));
    writer.value(
        "scannedAt",
        started == 0 ? Text() : Text(fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(started))));
    writer.value("timeZone", timeZoneName());
    writer.value("asked", asked);
    writer.value("complete", run.complete.load());
}

void writeFiles(Writer& writer, const ScanState& state) {
    writer.open("files", '[');
    for (const FileOutcome& outcome : state.fileOutcomes.all()) writer.file(state, outcome);
    writer.close(']');
}

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

template <class Visitor>
void writeLive(Visitor& writer, const ScanState& state) {
    writer.open("live", '{');
    for (const CategoryFacts* category : categoriesBy(&Places::liveKey)) {
        for (const RowKind& kind : category->kinds) {
            if (!kind.listed) continue;
            withList(state, kind.live,
                     [&](const auto& rows) { writer.list(kind.live.name, rows); });
        }
    }
    writer.list("MapContent", state.MapContent);
    writer.list("AccountContent", state.AccountContent);
    writer.list("ApplicationContent", state.ApplicationContent);
    writer.list("UserDictContent", state.UserDictContent);
    writer.close('}');
}

template <class Visitor>
void writeDeleted(Visitor& writer, const ScanState& state) {
    writer.open("deleted", '{');
    for (const CategoryFacts* category : categoriesBy(&Places::deletedKey)) {
        for (const RowKind& kind : category->kinds) {
            if (!kind.listed) continue;
            withList(state, kind.deleted, [&]<class Row>(const List<Row>& rows) {
                const auto live = std::get<ListField<Row>>(kind.live.field);
                writer.deletedList(kind.deleted.name, rows, state.*live);
            });
        }
    }
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
    writeRun(writer, state);
    writer.record("device", state.deviceInfo);
    writeSource(writer, state);
    writeFiles(writer, state);
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
