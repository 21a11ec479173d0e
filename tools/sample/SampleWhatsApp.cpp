#include "tools/sample/Digest.h"
#include "tools/sample/MessageStore.h"
#include "tools/sample/SampleTable.h"

namespace salvor {
namespace {

// The place of the early versions: deleted rows are looked for there.
constexpr const char* kDomain = "AppDomain-net.whatsapp.WhatsApp";
constexpr const char* kPath = "Documents/ChatStorage.sqlite";
constexpr std::int64_t kZero = 0;

const SampleColumns& messageColumns() {
    static const SampleColumns columns({{"Z_PK", "INTEGER PRIMARY KEY"},
                                        {"Z_ENT", "INTEGER", std::int64_t{9}},
                                        {"Z_OPT", "INTEGER", std::int64_t{2}},
                                        {"ZDATAITEMVERSION", "INTEGER", std::int64_t{3}},
                                        {"ZDOCID", "INTEGER"},
                                        {"ZENCRETRYCOUNT", "INTEGER", kZero},
                                        {"ZFILTEREDRECIPIENTCOUNT", "INTEGER", kZero},
                                        {"ZFLAGS", "INTEGER", std::int64_t{16777216}},
                                        {"ZGROUPEVENTTYPE", "INTEGER", kZero},
                                        {"ZISFROMME", "INTEGER", kZero},
                                        {"ZMESSAGEERRORSTATUS", "INTEGER", kZero},
                                        {"ZMESSAGESTATUS", "INTEGER", std::int64_t{8}},
                                        {"ZMESSAGETYPE", "INTEGER", kZero},
                                        {"ZSORT", "INTEGER"},
                                        {"ZSPOTLIGHTSTATUS", "INTEGER", std::int64_t{-32768}},
                                        {"ZSTARRED", "INTEGER"},
                                        {"ZCHATSESSION", "INTEGER", std::int64_t{2}},
                                        {"ZGROUPMEMBER", "INTEGER"},
                                        {"ZLASTSESSION", "INTEGER"},
                                        {"ZMEDIAITEM", "INTEGER"},
                                        {"ZMESSAGEINFO", "INTEGER"},
                                        {"ZMESSAGEDATE", "TIMESTAMP"},
                                        {"ZSENTDATE", "TIMESTAMP"},
                                        {"ZFROMJID", "VARCHAR"},
                                        {"ZMEDIASECTIONID", "VARCHAR"},
                                        {"ZPHASH", "VARCHAR"},
                                        {"ZPUSHNAME", "VARCHAR"},
                                        {"ZSTANZAID", "VARCHAR"},
                                        {"ZTEXT", "VARCHAR"},
                                        {"ZTOJID", "VARCHAR"}});
    return columns;
}

SampleRecord message(SampleFolder& folder, std::int64_t number) {
    auto& random = folder.random();
    const std::int64_t date = sinceReference(folder.device().startOfUse) + number * 1234;
    const bool fromMe = random.chance(50);
    const std::string partner = "49151" + std::to_string(7000000 + number % 5) + "@s.whatsapp.net";
    const std::string own = "491519999999@s.whatsapp.net";
    const std::string text = sampleWords(number, static_cast<std::size_t>(random.between(2, 14)));
    SampleRecord record;
    record.row = messageColumns().row(
        {{"ZDOCID", number},
         {"ZISFROMME", std::int64_t{fromMe}},
         {"ZSORT", number},
         {"ZCHATSESSION", number % 5 + 2},
         {"ZMESSAGEDATE", static_cast<double>(date) + 0.5},
         {"ZFROMJID", fromMe ? SqliteValue() : SqliteValue(partner)},
         {"ZPUSHNAME", fromMe ? SqliteValue() : SqliteValue(sampleWords(number % 5, 1))},
         {"ZSTANZAID", std::to_string(folder.device().startOfUse + number * 1234) + "-" +
                           std::to_string(number)},
         {"ZTEXT", text},
         {"ZTOJID", fromMe ? partner : own}});
    record.truth.database = sampleStoredName(kDomain, kPath);
    record.truth.text = text;
    record.truth.date = date;
    record.truth.handle = partner;
    record.truth.fromMe = fromMe;
    return record;
}

}  // namespace

void writeSampleWhatsApp(SampleFolder& folder) {
    SqliteFile database(folder.add(kDomain, kPath), sampleLayout(folder));
    database.execute("CREATE TABLE Z_METADATA (Z_VERSION INTEGER, Z_UUID VARCHAR, Z_PLIST BLOB)");
    messageColumns().create(database, "ZWAMESSAGE");
    database.execute(
        "CREATE TABLE ZWACHATSESSION (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
        "ZCONTACTJID VARCHAR, ZPARTNERNAME VARCHAR)");
    for (std::int64_t chat = 0; chat < 5; ++chat) {
        database.insert(
            "ZWACHATSESSION",
            {SqliteValue(), std::int64_t{4}, std::int64_t{1},
             "49151" + std::to_string(7000000 + chat) + "@s.whatsapp.net", sampleWords(chat, 1)});
    }
    SampleTable table(folder, database, "ZWAMESSAGE", "Z_PK");
    const auto make = [&](std::int64_t number) { return message(folder, number); };
    table.fill(150, make);
    table.deleteSome();
    table.finish(6, make);
    database.close();
}

}  // namespace salvor
