#include "services/InternetHistoryService.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

#include "live/RowReading.h"
#include "records/ListRows.h"
#include "scan/BackupDatabase.h"
#include "scan/StoredNames.h"
#include "util/DateUtils.h"
#include "util/PropertyList.h"

namespace salvor {
namespace {

constexpr std::array kCandidates{storedNameOf(Stored::SafariHistory),
                                 storedNameOf(Stored::SafariPagesFrom7),
                                 storedNameOf(Stored::SafariPagesBefore7)};

constexpr auto kVisits =
    "SELECT hv.id, title, visit_time, url, visit_count  FROM history_visits hv inner join "
    "history_items hi on hv.history_item = hi.id order by visit_time desc, hv.id";

/// How the last statement ended: what stands at these places need not be a database.
struct LastEnd : DatabaseWatch {
    void readingEnded(const ReadingEnd& end) override { last = end; }
    std::optional<ReadingEnd> last;
};

/// The visit times count from 2001 but are read as Unix time, which this format undoes.
Text displayDate(double secondsSince2001) {
    const auto date = DateUtils::ConvertFromUnixTimeStampToDateTime(secondsSince2001);
    return date ? Text(DateUtils::DateTimeToStringWithOffset(*date)) : std::nullopt;
}

/// The whole text as a number.
std::optional<double> numberOf(const Text& text) {
    if (!text) return std::nullopt;
    double number = 0;
    const char* end = text->data() + text->size();
    const auto read = std::from_chars(text->data(), end, number);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

std::int32_t countOf(std::int64_t number) {
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(number, 0, std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

InternetHistoryService::InternetHistoryService(ScanState& state)
    : abstractServices(state, kCandidates.front()) {}

void InternetHistoryService::RecoverFromIOSBackup(const DeviceInfo& device) {
    state_.AllInternetContent.clear();
    state_.AllDeletedInternet.clear();
    for (const char* name : kCandidates) {
        if (cancelled_.stop_requested()) return;
        SqliteDbName_ = name;
        queryDbForHistory(device);
    }
}

void InternetHistoryService::queryDbForHistory(const DeviceInfo& device) {
    const auto file = ConnectionString(device);
    if (!file) return;
    const auto before = retrieved_;
    const auto end = std::make_shared<LastEnd>();
    dbUtils_ = backupDatabase(state_, *file, end, cancelled_);
    if (dbUtils_->openDatabase()) {
        auto rows = dbUtils_->executeList({kVisits});
        rows.keepsOfEachRow(roomOf<InternetHistory>);
        while (rows.next()) {
            auto visit = std::make_shared<InternetHistory>();
            visit->Url = rows.stringForColumn("url");
            visit->Title = rows.stringForColumn("title");
            visit->VisitCount = rows.intForColumn("visit_count");
            visit->LastVisitedDate = displayDate(rows.doubleForColumn("visit_time"));
            list(std::move(visit));
        }
    }
    if (retrieved_ == before && readPropertyList(file->path))
        end->last = ReadingEnd{};
    else if (end->last && end->last->kind == ReadingEnd::Kind::Broken)
        end->last->reason += ", nor a property list";
    if (end->last) state_.readingEnded(SqliteDbName_, *end->last);
}

bool InternetHistoryService::readPropertyList(const std::filesystem::path& path) {
    const auto history = PropertyList::read(path);
    for (const PropertyList& page : history.dictionaries("WebHistoryDates")) {
        if (cancelled_.stop_requested()) break;
        auto visit = std::make_shared<InternetHistory>();
        visit->Url = page.text("");
        visit->Title = page.text("title");
        visit->VisitCount = countOf(page.integer("visitCount").value_or(0));
        if (const auto seconds = numberOf(page.scalar("lastVisitedDate")))
            visit->LastVisitedDate = displayDate(*seconds);
        list(std::move(visit));
    }
    return static_cast<bool>(history);
}

void InternetHistoryService::list(std::shared_ptr<InternetHistory> visit) {
    visit->SlNo = ++retrieved_;
    state_.AllInternetContent.push_back(visit);
    state_.InternetContent.push_back(std::move(visit));
    ++state_.InternetCount;
    state_.updateUIfoundRecoveredData();
}

}  // namespace salvor
