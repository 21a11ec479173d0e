#include "tests/live/DaosFixture.h"

namespace salvor {
namespace {

using testing::ElementsAre;

using DaosNotes = DaosFixture;
using DaosCalendar = DaosFixture;
using DaosCalls = DaosFixture;
using DaosContacts = DaosFixture;
using DaosWhatsApp = DaosFixture;
using DaosSkype = DaosFixture;

constexpr const char* kNoteStore =
    "CREATE TABLE ZNOTE (Z_PK INTEGER PRIMARY KEY, ZDELETEDFLAG INTEGER, ZCREATIONDATE TIMESTAMP, "
    "ZGUID VARCHAR, ZSUMMARY VARCHAR, ZTITLE VARCHAR);"
    "CREATE TABLE ZNOTEBODY (Z_PK INTEGER PRIMARY KEY, ZOWNER INTEGER, ZCONTENT VARCHAR);"
    "INSERT INTO ZNOTE VALUES (1, 0, 398000000.5, 'g', 's', 'Shopping list'), (2, 1, NULL, NULL, "
    "NULL, 'gone');"
    "INSERT INTO ZNOTEBODY VALUES (2, 1, '<div>a&nbsp;b</div>'), (3, 2, 'other');";

TEST_F(DaosNotes, OlderStore) {
    write("notes", kNoteStore);
    const auto notes = daos.GetNotes();
    EXPECT_THAT(toldAll(notes),
                ElementsAre("RowId=1|SlNo=1|CreatedDate=2013-08-12 11:33:20|"
                            "OriginalCreationDate=398000000.5|Title=Shopping list|Summary=s|GUID=g|"
                            "noteBody={Owner=1|Content=a b}"));
    EXPECT_EQ(state.NoteCount, 1);
    EXPECT_EQ(state.AllNotesContent, notes);

    // Joined by key, not by owner.
    EXPECT_THAT(
        toldAll(daos.GetDeletedNotes()),
        ElementsAre("RowId=2|SlNo=1|CreatedDate=|Title=gone|noteBody={Owner=2|Content=a b}"));
    EXPECT_EQ(daos.GetAllNotesRowID(), (std::vector<std::int64_t>{1, 2}));
    EXPECT_TRUE(daos.isDuplicateNote("ping l"));
    EXPECT_FALSE(daos.isDuplicateNote("ping x"));
    EXPECT_FALSE(daos.isDuplicateNote("it's"));
    EXPECT_FALSE(daos.isDuplicateNote(std::nullopt));  // looks for "(null)"
}

TEST_F(DaosNotes, NewerStore) {
    // The body is a gzip stream whose field path 2, 3, 2 holds "Hi".
    write("4f98687d8ab0d6d1a371110e6b7300f6e465bef2",
          "CREATE TABLE ZICCLOUDSYNCINGOBJECT (Z_PK INTEGER PRIMARY KEY, ZCREATIONDATE TIMESTAMP, "
          "ZMODIFICATIONDATE TIMESTAMP, ZFOLDERSMODIFICATIONDATE TIMESTAMP, ZTITLE1 VARCHAR, "
          "ZSNIPPET VARCHAR, ZIDENTIFIER VARCHAR, ZTITLE2 VARCHAR, ZNOTEDATA INTEGER);"
          "CREATE TABLE ZICNOTEDATA (Z_PK INTEGER PRIMARY KEY, ZNOTE INTEGER, ZDATA BLOB);"
          "CREATE TABLE Z_12NOTES (Z_12FOLDERS INTEGER, Z_9NOTES INTEGER);"
          "INSERT INTO ZICCLOUDSYNCINGOBJECT VALUES (3, 398000000, 398000060, NULL, 'T', 'S', 'i', "
          "NULL, 5), (4, NULL, NULL, NULL, NULL, NULL, NULL, 'Folder', NULL), (6, NULL, NULL, "
          "NULL, 'locked', NULL, NULL, NULL, 7);"
          "INSERT INTO ZICNOTEDATA VALUES (5, 3, x'1f8b080000000000020313"
          "6293621162f2c80400b30cfb9a08000000'), (7, 6, x'00');"
          "INSERT INTO Z_12NOTES VALUES (4, 3), (4, 6);");
    EXPECT_THAT(
        toldAll(daos.GetNotes91()),
        ElementsAre("SlNo=1|CreatedDate=2013-08-12 11:33:20|ModificationDate=2013-08-12 11:34:20|"
                    "OriginalCreationDate=398000000|Title=T|Summary=S|noteBody={Content=Hi}",
                    "SlNo=2|CreatedDate=|Title=locked|noteBody={}"));

    write("notes", kNoteStore);
    daos.GetNotes();
    EXPECT_EQ(state.NoteCount, 3);  // both stores
}

TEST_F(DaosCalendar, OlderEvents) {
    version(4);
    write("calendar",
          "CREATE TABLE Event (ROWID INTEGER PRIMARY KEY, summary TEXT, location TEXT, description "
          "TEXT, start_date INTEGER, start_tz TEXT, end_date INTEGER, all_day INTEGER, calendar_id "
          "INTEGER, orig_start_date INTEGER, status INTEGER, privacy_level INTEGER);"
          "INSERT INTO Event VALUES (1, 'Tea', 'Here', 'd', 398000000, '_float', NULL, 1, 1, 5, 0, "
          "0);");
    for (const auto& events : {daos.GetCalendar(), daos.GetCalendarForIOSFive()}) {
        EXPECT_THAT(toldAll(events),
                    ElementsAre("SlNo=1|Summary=Tea|Location=Here|Description=d|"
                                "StartDate=2013-08-12 11:33:20|Start_TimeZone=|EndDate=|AllDay=1|"
                                "OrginalDate=5"));
    }
    EXPECT_EQ(state.AllCalendarContent.size(), 2U);
    EXPECT_EQ(state.CalendarCount, 1);
}

TEST_F(DaosCalendar, NewerEvents) {
    version(7);
    write(
        "calendar",
        "CREATE TABLE CalendarItem (ROWID INTEGER PRIMARY KEY, summary TEXT, location_id INTEGER, "
        "description TEXT, start_date REAL, start_tz TEXT, end_date REAL, all_day INTEGER, "
        "calendar_id INTEGER, orig_date REAL, status INTEGER, privacy_level INTEGER, "
        "unique_identifier TEXT, priority INTEGER);"
        "CREATE TABLE Location (ROWID INTEGER PRIMARY KEY, title TEXT, location TEXT);"
        "INSERT INTO Location VALUES (2, 'Park', 'x');"
        "INSERT INTO CalendarItem VALUES (9, 'Run', 2, NULL, 398000000.9, 'Europe/Berlin', "
        "398003600, 0, 1, NULL, 0, 0, 'U', 3);");
    EXPECT_THAT(toldAll(daos.GetCalendar()),
                ElementsAre("UniqueIdentifier=U|SlNo=1|Summary=Run|Location=Park|"
                            "StartDate=2013-08-12 11:33:20|Start_TimeZone=Europe/Berlin|"
                            "EndDate=2013-08-12 12:33:20|AllDay=0"));
    EXPECT_THAT(toldAll(daos.GetCalendarForIOSFive()),
                ElementsAre("UniqueIdentifier=U|SlNo=1|Summary=Run|Location=|"
                            "StartDate=2013-08-12 11:33:20|Start_TimeZone=Europe/Berlin|"
                            "EndDate=2013-08-12 12:33:20|AllDay=0|Priority=3"));
    EXPECT_EQ(daos.GetAllCalenderRowID(), (std::vector<std::int64_t>{9}));
    EXPECT_EQ(daos.getLocationFromLocationID(2), "");  // the statement never prepares

    DAOs::serveCalendarLookups(state);
    const auto lookups = state.openCalendarLookups();
    ASSERT_NE(lookups, nullptr);
    EXPECT_EQ(state.daos(), lookups);
    EXPECT_EQ(state.dbUtils()->dbPath(), (folder / "calendar").string());
}

TEST_F(DaosCalls, OlderStore) {
    version(7);
    write("calls",
          "CREATE TABLE call (ROWID INTEGER PRIMARY KEY, address TEXT, date INTEGER, duration "
          "INTEGER, flags INTEGER, face_time_data BLOB);"
          "INSERT INTO call VALUES (1, '111', 1300000000, 60, 4, NULL), (2, '111', 1300000001, 0, "
          "8, NULL), (3, '222', 1300000002, 5, 5, NULL), (4, '222', 1300000003, 0, 5, NULL), (5, "
          "'333', 1300000004, 9, 0, NULL), (6, '444', 1300000005, 9, 1507332, x'00');");
    auto known = std::make_shared<Contact>();
    known->ContactNo1 = "111";
    known->FirstName = "Ann";
    state.ContactContent.push_back(known);
    const auto calls = daos.GetCallLogs();
    ASSERT_EQ(calls.size(), 5U);
    EXPECT_EQ(
        textsOf(calls, &CallLog::CallType),
        (Texts{"Incoming Call -Answered", "Incoming Call -Not answered", "Outgoing Call -Answered",
               "Outgoing Call -Not answered", "Outgoing Cancelled"}));
    EXPECT_EQ(textsOf(calls, &CallLog::ContactName), (Texts{"Ann", "Ann", "", "", ""}));
    EXPECT_EQ(told(*calls[0]),
              "SlNo=1|Address=111|LocalTime=2011-03-13 07:06:40|PhoneNumber=111|"
              "CallType=Incoming Call -Answered|ContactName=Ann|CallDuration=60|CallMode=Call");
    EXPECT_EQ(state.CallLogCount, 5);
    EXPECT_EQ(state.AllCallLogContent, calls);

    const auto faceTime = daos.GetFaceTimeLogs();
    EXPECT_EQ(textsOf(faceTime, &CallLog::CallType), Texts{"Incoming Call -Answered"});
    EXPECT_EQ(textsOf(faceTime, &CallLog::CallMode), Texts{"FaceTime"});
    EXPECT_EQ(state.FaceTimeCount, 1);
    EXPECT_EQ(daos.GetCallLogGroup().size(), 4U);
    EXPECT_EQ(daos.GetAllCallHistroyRowID().at(3), "222");
    EXPECT_EQ(daos.dateForRowID(1), "2011-03-13 07:06 AM");
    EXPECT_EQ(daos.dateForRowID(99), "");
    EXPECT_FALSE(daos.isDeletedZCALLRECORD(1));
}

TEST_F(DaosCalls, AnAbsentNumberIsNotAnEmptyOne) {
    version(7);
    write("calls",
          "CREATE TABLE call (ROWID INTEGER PRIMARY KEY, address TEXT, face_time_data BLOB);"
          "INSERT INTO call VALUES (1, NULL, NULL), (2, '', NULL), (3, NULL, NULL);");
    auto numberless = std::make_shared<Contact>();
    numberless->FirstName = "Ann";
    state.ContactContent.push_back(numberless);
    EXPECT_EQ(textsOf(daos.GetCallLogs(), &CallLog::ContactName), (Texts{"", "Ann", ""}));
}

TEST_F(DaosCalls, NewerStore) {
    version(8);
    write("calls",
          "CREATE TABLE ZCALLRECORD (Z_PK INTEGER PRIMARY KEY, ZCALLTYPE INTEGER, ZORIGINATED "
          "INTEGER, ZDATE TIMESTAMP, ZDURATION FLOAT, ZADDRESS VARCHAR, ZISO_COUNTRY_CODE VARCHAR);"
          "INSERT INTO ZCALLRECORD VALUES (1, 1, 0, 398000000.5, 0.0, '1', 'de'), (2, 1, 1, "
          "398000060, 12.7, '2', 'de');");
    EXPECT_THAT(toldAll(daos.GetCallLogs()),
                ElementsAre("SlNo=1|Address=2|LocalTime=2013-08-12 11:34:20|PhoneNumber=2|"
                            "CallType=Outgoing Call -Answered|ContactName=|CallDuration=12|"
                            "CallMode=Call",
                            "SlNo=2|Address=1|LocalTime=2013-08-12 11:33:20|PhoneNumber=1|"
                            "CallType=Incoming Call -Not answered|ContactName=|CallMode=Call"));
    EXPECT_TRUE(daos.isDeletedZCALLRECORD(2));
    EXPECT_FALSE(daos.isDeletedZCALLRECORD(3));
}

TEST_F(DaosContacts, PersonsWithTheirValues) {
    write(
        "contacts",
        "CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY, First TEXT, Last TEXT, Middle TEXT, "
        "Organization TEXT, Nickname TEXT, Birthday TEXT, CreationDate INTEGER, ModificationDate "
        "INTEGER, guid TEXT);"
        "CREATE TABLE ABMultiValue (UID INTEGER PRIMARY KEY, record_id INTEGER, property INTEGER, "
        "identifier INTEGER, label INTEGER, value TEXT);"
        "CREATE TABLE ABMultiValueLabel (value TEXT);"
        "CREATE TABLE ABMultiValueEntry (parent_id INTEGER, key INTEGER, value TEXT);"
        "CREATE TABLE ABMultiValueEntryKey (value TEXT);"
        "INSERT INTO ABPerson VALUES (1, 'Ann', 'Lee', '', 'Org', 'Annie', '5.5', 398000000, "
        "398000060, 'u'), (2, NULL, NULL, NULL, 'Shop', NULL, NULL, NULL, NULL, NULL);"
        "INSERT INTO ABMultiValueLabel VALUES ('_$!<Mobile>!$_');"
        "INSERT INTO ABMultiValueEntryKey VALUES ('Street'), ('City'), ('unknown');"
        "INSERT INTO ABMultiValueEntry VALUES (13, 1, 'Main 1'), (13, 2, 'Bonn'), (13, 3, 'x');"
        "INSERT INTO ABMultiValue VALUES (10, 1, 3, 0, 1, '+1 (555) 12-3'), (11, 1, 4, 0, NULL, "
        "'a-b@c'), (12, 1, 3, 1, NULL, '777'), (13, 1, 5, 0, NULL, NULL), (14, 1, 22, 0, NULL, "
        "'http://x'), (15, 9, 3, 0, NULL, '999');");
    const auto contacts = daos.GetContacts();
    EXPECT_THAT(
        toldAll(contacts),
        ElementsAre(
            "RowId=1|SlNo=1|Guid=u|FirstName=Ann|MiddleName=|LastName=Lee|NickName=Annie|"
            "Nickname=Annie|FullName=Ann Lee|OriginalFirstName=Ann|OriginalLastName=Lee|"
            "Organization=Org|ContactNo1=+1555123|ContactNo2=777|EmailAddress1=a-b@c|"
            "OriginalContactNo1=+1 (555) 12-3|ContactNumbersText=+1555123, 777|"
            "ContactEmailAddresesText=a-b@c|ContactNumbers=[{Label=Mobile|"
            "Number=+1555123} + {identifier=1|Number=777}]|"
            "ContactEmailAddresses=[{Email=a-b@c}]|ContactAddresses=[{Street=Main 1|"
            "City=Bonn}]|ContactHomePages=[{HomePageUrl=http://x}]|"
            "CreatedDate=2013-08-12 11:33:20|ModifiedDate=2013-08-12 11:34:20|"
            "CreationDate=2013-08-12 11:33:20|ModificationDate=2013-08-12 11:34:20|"
            "OriginalCreationDate=398000000|OriginalModificationDate=398000060|Birthday=5.5",
            "RowId=2|SlNo=2|FullName=Shop|Organization=Shop|CreatedDate=|ModifiedDate=|"
            "CreationDate=|ModificationDate="));
    EXPECT_EQ(state.ContactCount, 2);
    EXPECT_EQ(state.AllContactContent, contacts);

    EXPECT_EQ(daos.GetContactProperty(1).size(), 5U);
    const auto phones = daos.GetContactPhoneNum(1);
    ASSERT_EQ(phones.size(), 2U);
    EXPECT_EQ(phones[0].value, "+1555123");
    EXPECT_EQ(daos.GetAllContactRowID(),
              (std::map<std::int64_t, Text>{{1, "Ann"}, {2, std::nullopt}}));
    EXPECT_FALSE(daos.isDeletedContacted(1));  // names a column that no person table has
    EXPECT_EQ(daos.GetNameForAddress("55123"), "Ann");
    EXPECT_EQ(daos.GetNameForAddress("551234"), std::nullopt);
}

TEST_F(DaosWhatsApp, Messages) {
    write("whatsapp",
          "CREATE TABLE ZWAMESSAGE (Z_PK INTEGER PRIMARY KEY, ZISFROMME INTEGER, ZMESSAGEDATE "
          "TIMESTAMP, ZFROMJID VARCHAR, ZPUSHNAME VARCHAR, ZTEXT VARCHAR, ZTOJID VARCHAR);"
          "CREATE TABLE ZWACHATSESSION (ZCONTACTJID VARCHAR, ZPARTNERNAME VARCHAR);"
          "INSERT INTO ZWACHATSESSION VALUES ('491@s.whatsapp.net', 'Bo');"
          "INSERT INTO ZWAMESSAGE VALUES (1, 0, 398000060, '491@s.whatsapp.net', 'p', 'in', 'me'), "
          "(2, 1, 398000000, NULL, NULL, 'out', '491'), (3, 0, NULL, '5@g.us', 'p', NULL, NULL);");
    const auto log = daos.GetWhatsAppLog();
    // A group has no number; a sender without server stays as stored, though looked up as a user.
    EXPECT_THAT(
        toldAll(log),
        ElementsAre("MessageDate= |FromMsgID=5@g.us|ContactName=",
                    "MessageDate=2013-08-12 11:33:20|ToMsgID=491|zText=out|ContactName=Bo|"
                    "PhoneNo=+491|isSent=true|ishavingName=true",
                    "MessageDate=2013-08-12 11:34:20|FromMsgID=491@s.whatsapp.net|ToMsgID=me|"
                    "zText=in|ContactName=Bo|PhoneNo=+491|ishavingName=true"));
    EXPECT_EQ(state.WhatsAppCount, 3);
    EXPECT_EQ(state.AllWhatsAppContent, log);

    EXPECT_EQ(daos.GetWhatsApp("491@s.whatsapp.net").size(), 1U);
    EXPECT_EQ(daos.GetWhatsApp("p").size(), 1U);
    EXPECT_EQ(daos.GetWhatsAppContactName("491@s.whatsapp.net"), "Bo");
    EXPECT_EQ(daos.GetWhatsAppContactName("nobody"), "");
    EXPECT_EQ(daos.GetWhatsAppContactName(std::nullopt), "");
    EXPECT_EQ(daos.GetAllWhatsAppRowID(), (std::vector<std::int64_t>{1, 2, 3}));
}

TEST_F(DaosSkype, ContactsAndDialogs) {
    write("main.db",
          "CREATE TABLE Contacts (id INTEGER PRIMARY KEY, fullname TEXT, skypename TEXT, isblocked "
          "INTEGER);"
          "CREATE TABLE messages (author TEXT, timestamp INTEGER, body_xml TEXT, dialog_partner "
          "TEXT);"
          "INSERT INTO Contacts VALUES (1, 'Zoe', 'zoe1', NULL), (2, 'Al', 'al2', NULL), (3, 'B', "
          "'b', 1), (4, '', 'e', NULL);"
          "INSERT INTO messages VALUES ('zoe1', 1300000000, 'hi', 'zoe1'), ('zoe1', 1, NULL, "
          "'zoe1');");
    EXPECT_THAT(toldAll(daos.getSkypeContacts()),
                ElementsAre("skypeID=2|skypeName=al2|displayName=Al",
                            "skypeID=1|skypeName=zoe1|displayName=Zoe"));
    EXPECT_THAT(
        toldAll(daos.getDialogsPartner("zoe1")),
        ElementsAre("skypeID=1|skypeName=zoe1|displayName=Zoe|time=2011-03-13 07:06:40|body=hi"));
}

TEST(CallType, ByFlags) {
    for (const int flags : {4, 8, 0x170004}) EXPECT_EQ(DAOs::GetCallType(flags), "Incoming Call");
    EXPECT_EQ(DAOs::GetCallType(5), "Outgoing Call");
    for (const int flags : {0, 1, 9, -1}) EXPECT_EQ(DAOs::GetCallType(flags), "Outgoing Cancelled");
}

TEST(SpecialChars, PlusAndNoBreakBlankStay) {
    EXPECT_EQ(DAOs::removeSpecialCharsFromString("+1 (23)-4\xC2\xA0"
                                                 "5"),
              "+1234\xC2\xA0"
              "5");
}

}  // namespace
}  // namespace salvor
