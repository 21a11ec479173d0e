#include "tools/sample/Digest.h"
#include "tools/sample/MessageStore.h"
#include "tools/sample/SampleTable.h"

namespace salvor {
namespace {

constexpr const char* kDomain = "HomeDomain";
constexpr const char* kPath = "Library/Notes/notes.sqlite";
constexpr std::int64_t kZero = 0;

SampleColumns noteColumns(int ios) {
    SampleColumns columns({{"Z_PK", "INTEGER PRIMARY KEY"},
                           {"Z_ENT", "INTEGER", std::int64_t{3}},
                           {"Z_OPT", "INTEGER", std::int64_t{2}},
                           {"ZCONTAINSCJK", "INTEGER", kZero},
                           {"ZCONTENTTYPE", "INTEGER", kZero},
                           {"ZDELETEDFLAG", "INTEGER", kZero},
                           {"ZEXTERNALFLAGS", "INTEGER", kZero},
                           {"ZEXTERNALSERVERINTID", "INTEGER", std::int64_t{-4294967296}},
                           {"ZINTEGERID", "INTEGER"},
                           {"ZISBOOKKEEPINGENTRY", "INTEGER", kZero},
                           {"ZBODY", "INTEGER"},
                           {"ZSTORE", "INTEGER", std::int64_t{1}},
                           {"ZCREATIONDATE", "TIMESTAMP"},
                           {"ZMODIFICATIONDATE", "TIMESTAMP"},
                           {"ZAUTHOR", "VARCHAR"},
                           {"ZGUID", "VARCHAR"},
                           {"ZSERVERID", "VARCHAR"},
                           {"ZSUMMARY", "VARCHAR"},
                           {"ZTITLE", "VARCHAR"}});
    if (ios >= 7) columns.insert(7, {{"ZEXTERNALSEQUENCENUMBER", "INTEGER", kZero}});
    return columns;
}

const SampleColumns& bodyColumns() {
    static const SampleColumns columns({{"Z_PK", "INTEGER PRIMARY KEY"},
                                        {"Z_ENT", "INTEGER", std::int64_t{4}},
                                        {"Z_OPT", "INTEGER", std::int64_t{2}},
                                        {"ZOWNER", "INTEGER"},
                                        {"ZCONTENT", "VARCHAR"},
                                        {"ZEXTERNALCONTENTREF", "VARCHAR"},
                                        {"ZEXTERNALREPRESENTATION", "BLOB"}});
    return columns;
}

SampleRecord note(SampleFolder& folder, const SampleColumns& columns, std::int64_t number) {
    const std::int64_t date = sinceReference(folder.device().startOfUse) + number * 86400;
    const std::string title = sampleWords(number, 3);
    SampleRecord record;
    record.row = columns.row({{"ZINTEGERID", number},
                              {"ZBODY", number},
                              {"ZCREATIONDATE", static_cast<double>(date) + 0.5},
                              {"ZMODIFICATIONDATE", static_cast<double>(date) + 90.25},
                              {"ZGUID", folder.random().uuid()},
                              {"ZSUMMARY", sampleWords(number + 5000, 5)},
                              {"ZTITLE", title}});
    record.truth.database = sampleStoredName(kDomain, kPath);
    record.truth.text = title;
    record.truth.date = date;
    return record;
}

SampleRecord body(std::int64_t number) {
    const std::string content =
        sampleWords(number, 3) + "<div>" + sampleWords(number + 9000, 12) + "</div><div><br></div>";
    SampleRecord record;
    record.row = bodyColumns().row({{"ZOWNER", number}, {"ZCONTENT", content}});
    record.truth.database = sampleStoredName(kDomain, kPath);
    record.truth.text = content;
    record.truth.values["owner"] = number;
    return record;
}

}  // namespace

void writeSampleNotes(SampleFolder& folder) {
    const int ios = folder.device().ios;
    SqliteFile database(folder.add(kDomain, kPath), sampleLayout(folder));
    database.execute("CREATE TABLE Z_METADATA (Z_VERSION INTEGER, Z_UUID VARCHAR, Z_PLIST BLOB)");
    const auto columns = noteColumns(ios);
    columns.create(database, "ZNOTE");
    bodyColumns().create(database, "ZNOTEBODY");
    SampleTable notes(folder, database, "ZNOTE", "Z_PK");
    SampleTable bodies(folder, database, "ZNOTEBODY", "Z_PK");
    const auto makeNote = [&](std::int64_t number) { return note(folder, columns, number); };
    notes.fill(90, makeNote);
    bodies.fill(90, body);
    notes.deleteSome();
    bodies.deleteSome();
    notes.finish(4, makeNote);
    bodies.finish(4, body);
    database.close();
}

}  // namespace salvor
