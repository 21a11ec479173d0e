#include "services/WhatsAppService.h"

#include "tests/services/CategoryFixture.h"

namespace salvor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto kDomain = "AppDomain-net.whatsapp.WhatsApp";
constexpr auto kColumns =
    "(Z_PK INTEGER PRIMARY KEY, Z_ENT, Z_OPT, ZDATAITEMVERSION, ZDOCID, ZENCRETRYCOUNT, "
    "ZFILTEREDRECIPIENTCOUNT, ZFLAGS, ZGROUPEVENTTYPE, ZISFROMME, ZMESSAGEERRORSTATUS, "
    "ZMESSAGESTATUS, ZMESSAGETYPE, ZSORT, ZSPOTLIGHTSTATUS, ZSTARRED, ZCHATSESSION, ZGROUPMEMBER, "
    "ZLASTSESSION, ZMEDIAITEM, ZMESSAGEINFO, ZMESSAGEDATE, ZSENTDATE, ZFROMJID VARCHAR, "
    "ZMEDIASECTIONID, ZPHASH, ZPUSHNAME, ZSTANZAID, ZTEXT, ZTOJID VARCHAR)";

struct Row {
    int key;
    const char* from;  ///< null for one sent by the owner
    const char* to;
    const char* text;
    double date = 400000000.5;
};

std::string quoted(const char* text) {
    return text == nullptr ? "NULL" : "'" + std::string(text) + "'";
}

std::string sqlRows(const std::vector<Row>& rows) {
    std::string sql;
    for (const Row& row : rows) {
        const auto key = std::to_string(row.key);
        sql += (sql.empty() ? "(" : ",(") + key + ",9,2,3," + key + ",0,0,16777216,0," +
               (row.from == nullptr ? "1" : "0") + ",0,8,0," + key +
               ",-32768,NULL,2,NULL,NULL,NULL,NULL," + std::to_string(row.date) + ",NULL," +
               quoted(row.from) + ",NULL,NULL," + (row.from == nullptr ? "NULL" : "'push'") +
               ",'1378307200-" + key + "'," + quoted(row.text) + "," + quoted(row.to) + ")";
    }
    return sql;
}

std::string liveTables(const std::string& sessions, const std::vector<Row>& rows) {
    return table("ZWAMESSAGE", kColumns, sqlRows(rows)) +
           table("ZWACHATSESSION", "(ZCONTACTJID, ZPARTNERNAME)", sessions) +
           table("ZWAMEDIAITEM",
                 "(Z_PK INTEGER PRIMARY KEY, ZMESSAGE, ZFILESIZE, ZMOVIEDURATION, "
                 "ZMEDIALOCALPATH, ZTHUMBNAILLOCALPATH, ZXMPPTHUMBPATH)");
}

class Chats : public CategoryFixture {
  protected:
    std::string stored(const std::string& location) const {
        return folder / sampleStoredName(kDomain, location);
    }

    /// Two of Ada's, one of a group and one to Bob, all deleted.
    void storeDeleted(const char* name) const {
        store(name, liveTables("('x','y')", {{1, "1@s.whatsapp.net", "2@s.whatsapp.net", "live"}}),
              {{kColumns,
                sqlRows({{101, "4911@s.whatsapp.net", "me@s.whatsapp.net", "early one"},
                         {102, nullptr, "4922@s.whatsapp.net", "to Bob", 400000200.5},
                         {103, "77-88@g.us", "me@s.whatsapp.net", "in a group", 400000100.5},
                         {104, "4911@s.whatsapp.net", "me@s.whatsapp.net", "late one",
                          400000300.5}})}});
    }

    static Texts partners(const WhatsAppService& service) {
        Texts lines;
        for (const auto& partner : service.partners()) {
            std::string line = joined({partner->Phone, partner->ZPartnerName}) + ":";
            for (const auto& message : partner->ObservableCollection) {
                line += " " + message->ZText.value_or("-");
                EXPECT_EQ(message->whatsAppContact.lock(), partner);
            }
            lines.push_back(line);
        }
        return lines;
    }

    WhatsAppService service{state};
};

TEST_F(Chats, GroupsWhatIsCarvedByPartnerAndListsItAsItIsFound) {
    storeDeleted(WhatsAppSqliteDbName);
    service.RecoverFromIOSBackup(device);
    EXPECT_THAT(textsOf(state.DeletedWhatsApp, &WhatsApp::zText),
                ElementsAre("late one", "in a group", "to Bob", "early one"));
    EXPECT_EQ(state.AllDeletedWhatsApp.size(), 4U);
    EXPECT_EQ(state.DeletedWhatsAppCount, 4);
    EXPECT_EQ(service.recovered(), 4);
    // What stands before the user server; a group keeps its whole identifier.
    EXPECT_THAT(partners(service), ElementsAre("4911|-: late one early one",
                                               "77-88@g.us|-: in a group", "4922|-: to Bob"));
    for (const auto& partner : service.partners()) EXPECT_TRUE(partner->ContainsDeletedMessage);
    EXPECT_EQ(service.partners()[0]->ZContactJID, "4911@s.whatsapp.net");
    EXPECT_THAT(service.model(), IsEmpty());
}

TEST_F(Chats, FilteringAgainFindsThePartnersMade) {
    storeDeleted(WhatsAppSqliteDbName);
    service.doRecovery(device);
    EXPECT_THAT(service.partners(), IsEmpty());
    service.AdditionalFiltering();
    EXPECT_EQ(service.partners().size(), 3U);
    service.AdditionalFiltering();
    EXPECT_EQ(service.partners().size(), 3U);
}

TEST_F(Chats, CarvesTheFirstOfTheTwoPlacesOnly) {
    storeDeleted(WhatsAppSqliteDbName2);
    service.RecoverFromIOSBackup(device);
    EXPECT_THAT(state.DeletedWhatsApp, IsEmpty());
}

TEST_F(Chats, ReadsMessagesOnlyOfPartnersWhoseIdentifierIsAnExpression) {
    // Kept: first-identifier-unquoted.
    store(WhatsAppSqliteDbName,
          liveTables("('4911@s.whatsapp.net','Ada'),('4922','Bob'),(':x','Eve'),(NULL,'none'),"
                     "('@ContactID',NULL)",
                     {{3, "4911@s.whatsapp.net", "me", "of Ada"},
                      {5, nullptr, "4922", "to Bob"},
                      {4, "4922", "me", "of Bob", 60.5},
                      {6, ":x", "me", "of Eve"},
                      {7, nullptr, ":x", "to Eve"},
                      {8, "@ContactID", "me", "of Mal"}}));
    service.getWhatisExisting(device);
    EXPECT_THAT(partners(service), ElementsAre("4911|Ada:", "4922|Bob: of Bob to Bob",
                                               ":x|Eve: to Eve", "@ContactID|-: of Mal"));
    EXPECT_EQ(service.retrieved(), 4);
    const auto& message = dynamic_cast<const WhatsAppMessage&>(*service.model()[0]);
    EXPECT_EQ(joined({std::to_string(message.ZPrimaryKey), message.Date, message.ZFromJid,
                      message.ZToJid, message.ZStandZAid, message.Type()}),
              "4|2001-01-01 00:01:00|4922|me|1378307200-4|Received");
    EXPECT_FALSE(message.Recovered);
    EXPECT_EQ(message.whatsAppMessageAttachment, nullptr);
    EXPECT_TRUE(dynamic_cast<const WhatsAppMessage&>(*service.model()[1]).IsFromMe);
}

TEST_F(Chats, ResolvesMediaBelowTheLibrary) {
    store(
        WhatsAppSqliteDbName,
        liveTables("('4922','Bob')", {{1, "4922", "me", "a"}}) +
            "INSERT INTO ZWAMEDIAITEM VALUES"
            "(1,11,4096,9,'Media/abc.jpg','unused','Media/abc.thumb'),(2,11,1,1,'later',NULL,NULL),"
            "(3,12,5000000000,0,'/Media/abc.jpg',NULL,NULL),(4,13,NULL,NULL,NULL,'x','/t'),"
            "(5,14,'big',x'00',x'FF',NULL,5)");
    service.getWhatisExisting(device);
    const auto path = [this](const std::string& location) {
        return (folder / sampleDigest("AppDomain-net.whatsapp.WhatsApp-Library" + location))
            .string();
    };
    // Kept: two-slashes.
    const std::pair<std::int64_t, std::string> cases[] = {
        {11, "ZMediaLocalPath=" + path("//Media/abc.jpg") +
                 "|OriginalZMediaLocalPath=Media/abc.jpg|ZThumbnailLocalPath=" +
                 path("//Media/abc.thumb") +
                 "|OriginalZThumbnailLocalPath=Media/abc.thumb|ZFileSize=4096|ZMovieDuration=9"},
        {12, "ZMediaLocalPath=" + path("/Media/abc.jpg") +
                 "|OriginalZMediaLocalPath=/Media/abc.jpg|ZFileSize=5000000000"},
        {13, "ZThumbnailLocalPath=" + path("/t") + "|OriginalZThumbnailLocalPath=/t"},
        {14, "ZThumbnailLocalPath=" + path("//5") + "|OriginalZThumbnailLocalPath=5"},
    };
    for (const auto& [message, expected] : cases) {
        const auto found = service.RetrieveWhatsAppMessageAttachments(device, message);
        ASSERT_NE(found, nullptr) << message;
        EXPECT_EQ(told(*found), expected) << message;
    }
    EXPECT_EQ(service.RetrieveWhatsAppMessageAttachments(device, 99), nullptr);
    device.BackupLocation = "/elsewhere";
    EXPECT_EQ(
        service.RetrieveWhatsAppMessageAttachments(device, 11)->ZMediaLocalPath->substr(0, 11),
        "/elsewhere/");
}

TEST_F(Chats, FindsProfilePicturesByEntryElseByNumber) {
    store(WhatsAppSqliteDbName,
          liveTables("('1@s.whatsapp.net','a'),('2@s.whatsapp.net','b'),('3@s.whatsapp.net','c'),"
                     "('4@s.whatsapp.net','d'),('5-6@g.us','e')",
                     {{1, "4922", "me", "a"}}) +
              table("ZWAPROFILEPICTUREITEM", "(ZJID, ZPATH)",
                    "('1@s.whatsapp.net','Media/Profile/1-99'),('5-6@g.us','../5-6-88'),"
                    "(NULL,'x'),('4@s.whatsapp.net',NULL)"));
    const std::vector<std::pair<const char*, std::vector<const char*>>> files = {
        {"a", {"1-99.jpg", "1-99.thumb", "1.jpg"}}, {"b", {"2.thumb"}}, {"e", {"5-6-88.jpg"}}};
    std::map<std::string, Text> expected = {{"c", std::nullopt}, {"d", std::nullopt}};
    for (const auto& [partner, names] : files) {
        for (const auto* name : names)
            writeWholeFile(stored(std::string("Library/Media/Profile/") + name), "x");
        expected[partner] = stored(std::string("Library/Media/Profile/") + names[0]);
    }
    service.getWhatisExisting(device);
    std::map<std::string, Text> found;
    for (const auto& partner : service.partners())
        found[partner->ZPartnerName.value_or("")] = partner->ZContactProfileBitmapImage;
    EXPECT_EQ(found, expected);
}

}  // namespace
}  // namespace salvor
