#include "export/Exporter.h"

#include <algorithm>
#include <initializer_list>
#include <span>
#include <system_error>

#include "export/CsvColumns.h"
#include "export/CsvWriter.h"
#include "scan/ScanState.h"

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
Exporter::Result write(const std::filesystem::path& path, std::span<const Column<Row>> columns,
                       std::initializer_list<const List<Row>*> lists, bool onlyTicked) {
    const auto rows = collect(lists, onlyTicked);
    if (rows.empty()) return std::nullopt;
    CsvWriter csv(path);
    std::int32_t serialNumber = 0;
    for (const Row* row : rows) {
        ++serialNumber;
        for (const auto column : columns) column(csv, *row, serialNumber);
        csv.finishLine();
    }
    ExportedFile file{path, rows.size(), csv.close()};
    if (csv.created()) removeUnlessWritten(file);
    return file;
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

Exporter::Result Exporter::ExportSMS(const ScanState& state, const Path& path,
                                     bool onlyTicked) const {
    return write<SMS>(path, smsColumns, {&state.SMSContent, &state.DeletedSMS}, onlyTicked);
}

Exporter::Result Exporter::ExportContact(const ScanState& state, const Path& path,
                                         bool onlyTicked) const {
    return write<Contact>(path, contactColumns, {&state.ContactContent, &state.DeletedContact},
                          onlyTicked);
}

Exporter::Result Exporter::ExportCallLog(const ScanState& state, const Path& path,
                                         bool onlyTicked) const {
    return write<CallLog>(path, callLogColumns, {&state.CallLogContent, &state.DeletedCallLog},
                          onlyTicked);
}

Exporter::Result Exporter::ExportNotes(const ScanState& state, const Path& path,
                                       bool onlyTicked) const {
    return write<Note>(path, noteColumns, {&state.NotesContent, &state.DeletedNotes}, onlyTicked);
}

Exporter::Result Exporter::ExportCalendar(const ScanState& state, const Path& path,
                                          bool onlyTicked) const {
    return write<Calendar>(path, calendarColumns, {&state.CalendarContent, &state.DeletedCalendar},
                           onlyTicked);
}

Exporter::Result Exporter::ExportWhatsApp(const ScanState& state, const Path& path,
                                          bool onlyTicked) const {
    return write<WhatsApp>(path, whatsAppColumns, {&state.WhatsAppContent, &state.DeletedWhatsApp},
                           onlyTicked);
}

Exporter::Result Exporter::ExportInternetData(const ScanState& state, const Path& path,
                                              bool onlyTicked) const {
    return write<InternetHistory>(path, internetColumns, {&state.InternetContent}, onlyTicked);
}

Exporter::Result Exporter::ExportMapHistory(const ScanState& state, const Path& path,
                                            bool /*onlyTicked*/) const {
    return write<MapHistory>(path, mapColumns, {&state.MapContent}, false);
}

Exporter::Result Exporter::ExportAccountData(const ScanState& state, const Path& path,
                                             bool /*onlyTicked*/) const {
    return write<Account>(path, accountColumns, {&state.AccountContent}, false);
}

Exporter::Result Exporter::ExportApplicationData(const ScanState& state, const Path& path,
                                                 bool /*onlyTicked*/) const {
    return write<Application>(path, applicationColumns, {&state.ApplicationContent}, false);
}

Exporter::Result Exporter::KeyboardDictionary(const ScanState& state, const Path& path,
                                              bool /*onlyTicked*/) const {
    return write<UserDict>(path, dictionaryColumns, {&state.UserDictContent}, false);
}

Exporter::Result Exporter::ExportDeleted(const ScanState& /*state*/, const Path& /*path*/,
                                         bool /*onlyTicked*/) const {
    return std::nullopt;
}

std::size_t Exporter::GetTheLengthOfTheStringBytes(Bytes bytes, std::size_t start) {
    const Bytes rest = slice(bytes, start, bytes.size());
    const auto zero = std::find(rest.begin(), rest.end(), 0);
    if (zero == rest.end()) return bytes.size();
    return start + static_cast<std::size_t>(zero - rest.begin()) + 1;
}

}  // namespace salvor
