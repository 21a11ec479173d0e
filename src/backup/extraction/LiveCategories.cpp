#include "backup/extraction/LiveCategories.h"

#include "live/DAOs.h"
#include "scan/BackupDatabase.h"
#include "scan/StoredNames.h"

namespace salvor {
namespace {

template <class Record>
using Query = List<Record> (DAOs::*)();

/// Appends what `query` of a fresh data-access object returns, when the database opens.
template <class Record>
void readInto(List<Record>& list, Query<Record> query, const std::string& storedName,
              ScanState& state, const std::stop_token& cancelled) {
    const auto file = state.backupFiles()->open(storedName);
    if (!backupDatabase(state, file, cancelled)->openDatabase()) return;
    DAOs daos(state, cancelled);
    const auto rows = (daos.*query)();
    list.insert(list.end(), rows.begin(), rows.end());
}

using Reader = void (*)(const CategoryFacts& category, ScanState& state,
                        const std::stop_token& cancelled);

template <class Record>
List<Record>& liveList(const CategoryFacts& category, ScanState& state, Query<Record> /*query*/) {
    return state.*std::get<ListField<Record>>(category.kinds.front().live.field);
}

template <auto Query>
void read(const CategoryFacts& category, ScanState& state, const std::stop_token& cancelled) {
    readInto(liveList(category, state, Query), Query, state.*category.database.field, state,
             cancelled);
}

void readNotes(const CategoryFacts& category, ScanState& state, const std::stop_token& cancelled) {
    readInto(state.NotesContent, &DAOs::GetNotes91, NotesIOS9SqliteDbName, state, cancelled);
    if (state.backupFiles()->find(state.NOTES_DATABASE))
        read<&DAOs::GetNotes>(category, state, cancelled);
}

constexpr PerCategory<Reader> kReaders{
    {Category::Messages, read<&DAOs::GetSMS>},
    {Category::Photos, nullptr},  // the picture sweep finds them
    {Category::Contacts, read<&DAOs::GetContacts>},
    {Category::Calls, read<&DAOs::GetCallLogs>},
    {Category::WhatsApp, read<&DAOs::GetWhatsAppLog>},
    {Category::Notes, readNotes},
    {Category::Internet, nullptr},  // read by its service, beside the recovery
    {Category::Calendar, read<&DAOs::GetCalendar>},
};

}  // namespace

void readLiveRows(const CategoryFacts& category, ScanState& state,
                  const std::stop_token& cancelled) {
    const Reader reader = kReaders[category.category];
    if (reader == nullptr) return;
    reader(category, state, cancelled);
    const RowKind& kind = category.kinds.front();
    state.*kind.liveCount.field = withList(
        state, kind.live, [](const auto& rows) { return static_cast<std::int32_t>(rows.size()); });
}

void clearDeletedLists(ScanState& state) {
    for (const CategoryFacts& category : categories()) {
        for (const RowKind& kind : category.kinds) {
            if (kind.emptiedForRecovery)
                withList(state, kind.deleted, [](auto& rows) { rows.clear(); });
        }
    }
}

}  // namespace salvor
