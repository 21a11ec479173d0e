#include "services/InternetHistoryService.h"

#include <array>

#include "records/ListRows.h"
#include "util/DateUtils.h"

namespace salvor {
namespace {

constexpr std::array kCandidates{"e74113c185fd8297e140cfcf9c99436c5cc06b57",
                                 "ed50eadf14505ef0b433e0c4a380526ad6656d3a",
                                 "1d6740792a2b845f4c1e6220c43906d7f0afe8ab"};

constexpr auto kVisits =
    "SELECT hv.id, title, visit_time, url, visit_count  FROM history_visits hv inner join "
    "history_items hi on hv.history_item = hi.id order by visit_time desc, hv.id";

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
    const auto path = ConnectionString(device);
    if (!path) return;
    dbUtils_ = std::make_shared<FMDBUtils>(path->string(), state_.sourcePolicy, cancelled_);
    if (!dbUtils_->openDatabase()) return;
    auto rows = dbUtils_->executeQuery(kVisits);
    while (rows.next()) {
        auto visit = std::make_shared<InternetHistory>();
        visit->Url = rows.stringForColumn("url");
        visit->Title = rows.stringForColumn("title");
        visit->VisitCount = rows.intForColumn("visit_count");
        // The column holds seconds since 2001 and is read as Unix time, which this format undoes.
        if (const auto date =
                DateUtils::ConvertFromUnixTimeStampToDateTime(rows.doubleForColumn("visit_time")))
            visit->LastVisitedDate = DateUtils::DateTimeToStringWithOffset(*date);
        visit->SlNo = ++retrieved_;
        state_.AllInternetContent.push_back(visit);
        state_.InternetContent.push_back(visit);
        ++state_.InternetCount;
        state_.updateUIfoundRecoveredData();
    }
}

}  // namespace salvor
