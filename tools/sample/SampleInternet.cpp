#include "tools/sample/Digest.h"
#include "tools/sample/MessageStore.h"
#include "tools/sample/PropertyList.h"
#include "tools/sample/SampleTable.h"

namespace salvor {
namespace {

constexpr std::int64_t kPages = 12;
constexpr const char* kBrowserDomain = "AppDomain-com.apple.mobilesafari";

struct Page {
    std::string url;
    std::string title;
    std::int64_t visits;
    double lastVisit;  ///< seconds since 2001
};

Page page(const SampleFolder& folder, std::int64_t number) {
    return {"https://example.org/" + std::to_string(number) + "?q=a,b", sampleWords(number, 4),
            number % 4 + 1,
            static_cast<double>(sinceReference(folder.device().startOfUse) + number * 5000) + 0.25};
}

TruthRow truthOf(const Page& page, const std::string& database) {
    TruthRow row;
    row.database = database;
    row.table = "history_visits";
    row.text = page.title;
    row.handle = page.url;
    row.date = static_cast<std::int64_t>(page.lastVisit);
    row.values["visits"] = page.visits;
    return row;
}

/// The history before iOS 8: a property list, the page visited last first. A page's address
/// stands under an empty key.
void writeList(SampleFolder& folder, const std::string& domain) {
    constexpr const char* kPath = "Library/Safari/History.plist";
    std::vector<PropertyListDictionary> dates;
    for (std::int64_t number = kPages; number > 0; --number) {
        const Page visited = page(folder, number);
        auto& entry = dates.emplace_back();
        entry.text("", visited.url)
            .text("title", visited.title)
            .text("lastVisitedDate", std::to_string(visited.lastVisit))
            .integer("visitCount", static_cast<std::uint64_t>(visited.visits));
        folder.truth().live.push_back(truthOf(visited, sampleStoredName(domain, kPath)));
    }
    PropertyListDictionary history;
    history.integer("WebHistoryFileVersion", 1).array("WebHistoryDates", std::move(dates));
    history.writeBinary(folder.add(domain, kPath));
}

/// The history of iOS 8 and 9: a database with a row for each page and for each visit.
void writeDatabase(SampleFolder& folder) {
    constexpr const char* kPath = "Library/Safari/History.db";
    SqliteFile database(folder.add(kBrowserDomain, kPath), sampleLayout(folder));
    database.execute(
        "CREATE TABLE history_items (id INTEGER PRIMARY KEY AUTOINCREMENT, url TEXT NOT NULL "
        "UNIQUE, domain_expansion TEXT, visit_count INTEGER NOT NULL, daily_visit_counts BLOB NOT "
        "NULL)");
    database.execute(
        "CREATE TABLE history_visits (id INTEGER PRIMARY KEY AUTOINCREMENT, history_item INTEGER "
        "NOT NULL, visit_time REAL NOT NULL, title TEXT, load_successful BOOLEAN NOT NULL, origin "
        "INTEGER NOT NULL, generation INTEGER NOT NULL)");
    for (std::int64_t number = 1; number <= kPages; ++number) {
        const Page visited = page(folder, number);
        database.insert("history_items",
                        {number, visited.url, SqliteValue(), visited.visits, SqliteBlob{"\1"}});
        for (std::int64_t visit = visited.visits; visit > 0; --visit) {
            auto row = truthOf(visited, sampleStoredName(kBrowserDomain, kPath));
            row.rowId = database.insert(
                "history_visits",
                {SqliteValue(), number, visited.lastVisit - static_cast<double>(visit - 1) * 60,
                 visited.title, std::int64_t{1}, std::int64_t{0}, std::int64_t{0}});
            row.date -= (visit - 1) * 60;
            folder.truth().live.push_back(std::move(row));
        }
    }
    database.close();
}

/// Pages that were open at the time of the backup. They are no history.
void writeOpenPages(SampleFolder& folder, const std::string& domain) {
    std::vector<PropertyListDictionary> documents;
    documents.emplace_back()
        .text("SafariStateDocumentTitle", "open page")
        .text("SafariStateDocumentURL", "https://example.org/open");
    PropertyListDictionary state;
    state.array("SafariStateDocuments", std::move(documents));
    state.writeBinary(folder.add(domain, "Library/Safari/SuspendState.plist"));
}

}  // namespace

void writeSampleInternet(SampleFolder& folder) {
    const int ios = folder.device().ios;
    const std::string domain = ios < 7 ? "HomeDomain" : kBrowserDomain;
    ios < 8 ? writeList(folder, domain) : writeDatabase(folder);
    writeOpenPages(folder, domain);
}

}  // namespace salvor
