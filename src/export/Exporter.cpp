#include "export/Exporter.h"

#include <algorithm>
#include <initializer_list>
#include <system_error>

#include "export/CsvColumns.h"
#include "export/CsvWriter.h"
#include "scan/Categories.h"

namespace salvor {
namespace {

using namespace columns;

template <class Row>
std::vector<const Row*> collect(std::initializer_list<const List<Row>*> lists, bool onlyTicked) {
    std::vector<const Row*> rows;
    for (const auto* list : lists) {
        for (const auto& row : *list) {
            if constexpr (requires { row->isChecked; }) {
                if (onlyTicked && row->isChecked != 1) continue;
            }
            rows.push_back(row.get());
        }
    }
    return rows;
}

// Half a file is worse than none. A device or pipe named as the target stays.
void removeUnlessWritten(const ExportedFile& file) {
    std::error_code ignored;
    if (!file.written() && std::filesystem::is_regular_file(file.path, ignored)) {
        std::filesystem::remove(file.path, ignored);
    }
}

template <class Row>
Exporter::Result write(const std::filesystem::path& path,
                       std::initializer_list<const List<Row>*> lists, bool onlyTicked,
                       const ExportWatch& watch) {
    const auto rows = collect(lists, onlyTicked);
    if (rows.empty()) return std::nullopt;
    if (watch.onlyCount != nullptr) {
        *watch.onlyCount += rows.size();
        return std::nullopt;
    }
    CsvWriter csv(path);
    std::int32_t serialNumber = 0;
    bool cancelled = false;
    for (const Row* row : rows) {
        cancelled = watch.cancelled.stop_requested();
        if (cancelled) break;
        ++serialNumber;
        for (const auto column : columnsOf<Row>) column(csv, *row, serialNumber);
        csv.finishLine();
        if (watch.progress) watch.progress({static_cast<std::size_t>(serialNumber), rows.size()});
    }
    ExportedFile file{path, rows.size(), csv.close(), cancelled};
    if (cancelled && file.cause.empty()) file.cause = "cancelled";
    if (csv.created()) removeUnlessWritten(file);
    return file;
}

const RowKind& rowsOf(Category category) {
    return factsOf(category).kinds.front();
}

}  // namespace

Exporter& Exporter::defaultExporter(const Path& path) {
    static Exporter shared;
    const std::lock_guard lock(shared.mutex_);
    shared.location_ = path;
    return shared;
}

Exporter::Path Exporter::ExportFileLocation() const {
    const std::lock_guard lock(mutex_);
    return location_;
}

Exporter::Result Exporter::exportRows(const RowKind& kind, const ScanState& state, const Path& path,
                                      bool onlyTicked, const ExportWatch& watch) const {
    return withList(state, kind.live, [&]<class Row>(const List<Row>& live) -> Result {
        if constexpr (Medium<Row>) {
            return std::nullopt;
        } else {
            const auto& deleted = state.*std::get<ListField<Row>>(kind.deleted.field);
            return kind.deletedExported ? write<Row>(path, {&live, &deleted}, onlyTicked, watch)
                                        : write<Row>(path, {&live}, onlyTicked, watch);
        }
    });
}

Exporter::Result Exporter::ExportSMS(const ScanState& state, const Path& path, bool onlyTicked,
                                     const ExportWatch& watch) const {
    return exportRows(rowsOf(Category::Messages), state, path, onlyTicked, watch);
}

Exporter::Result Exporter::ExportContact(const ScanState& state, const Path& path, bool onlyTicked,
                                         const ExportWatch& watch) const {
    return exportRows(rowsOf(Category::Contacts), state, path, onlyTicked, watch);
}

Exporter::Result Exporter::ExportCallLog(const ScanState& state, const Path& path, bool onlyTicked,
                                         const ExportWatch& watch) const {
    return exportRows(rowsOf(Category::Calls), state, path, onlyTicked, watch);
}

Exporter::Result Exporter::ExportNotes(const ScanState& state, const Path& path, bool onlyTicked,
                                       const ExportWatch& watch) const {
    return exportRows(rowsOf(Category::Notes), state, path, onlyTicked, watch);
}

Exporter::Result Exporter::ExportCalendar(const ScanState& state, const Path& path, bool onlyTicked,
                                          const ExportWatch& watch) const {
    return exportRows(rowsOf(Category::Calendar), state, path, onlyTicked, watch);
}

Exporter::Result Exporter::ExportWhatsApp(const ScanState& state, const Path& path, bool onlyTicked,
                                          const ExportWatch& watch) const {
    return exportRows(rowsOf(Category::WhatsApp), state, path, onlyTicked, watch);
}

Exporter::Result Exporter::ExportInternetData(const ScanState& state, const Path& path,
                                              bool onlyTicked, const ExportWatch& watch) const {
    return exportRows(rowsOf(Category::Internet), state, path, onlyTicked, watch);
}

Exporter::Result Exporter::ExportMapHistory(const ScanState& state, const Path& path,
                                            bool /*onlyTicked*/, const ExportWatch& watch) const {
    return write<MapHistory>(path, {&state.MapContent}, false, watch);
}

Exporter::Result Exporter::ExportAccountData(const ScanState& state, const Path& path,
                                             bool /*onlyTicked*/, const ExportWatch& watch) const {
    return write<Account>(path, {&state.AccountContent}, false, watch);
}

Exporter::Result Exporter::ExportApplicationData(const ScanState& state, const Path& path,
                                                 bool /*onlyTicked*/,
                                                 const ExportWatch& watch) const {
    return write<Application>(path, {&state.ApplicationContent}, false, watch);
}

Exporter::Result Exporter::KeyboardDictionary(const ScanState& state, const Path& path,
                                              bool /*onlyTicked*/, const ExportWatch& watch) const {
    return write<UserDict>(path, {&state.UserDictContent}, false, watch);
}

Exporter::Result Exporter::ExportDeleted(const ScanState& /*state*/, const Path& /*path*/,
                                         bool /*onlyTicked*/, const ExportWatch& /*watch*/) const {
    return std::nullopt;
}

std::size_t Exporter::GetTheLengthOfTheStringBytes(Bytes bytes, std::size_t start) {
    const Bytes rest = slice(bytes, start, bytes.size());
    const auto zero = std::find(rest.begin(), rest.end(), 0);
    if (zero == rest.end()) return bytes.size();
    return start + static_cast<std::size_t>(zero - rest.begin()) + 1;
}

}  // namespace salvor
