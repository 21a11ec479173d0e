#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <map>

#include "records/Appointment.h"
#include "records/CallHistory.h"
#include "records/Message.h"
#include "records/Note.h"
#include "records/NoteBody.h"
#include "records/RecordContext.h"
#include "records/SMS.h"
#include "records/WhatsAppMessage.h"

namespace salvor {
namespace {

/// Answers from maps and notes what it was asked for.
struct FakeLookups : DatabaseLookups {
    std::map<std::int32_t, Text> handles, handlesById;
    std::map<std::string, std::string> partners;
    std::vector<std::string> askedPartners;

    Text GetPhoneNumberForHID(std::int32_t id, const Text& fallback) override {
        return handles.contains(id) ? handles[id] : fallback;
    }
    Text GetPhoneNumberForID(std::int32_t id, const Text& fallback) override {
        return handlesById.contains(id) ? handlesById[id] : fallback;
    }
    Text getLocationFromLocationID(std::int64_t id) override { return "at " + std::to_string(id); }
    Text GetWhatsAppContactName(const Text& jid) override {
        askedPartners.push_back(jid.value_or("(absent)"));
        if (!jid || !partners.contains(*jid)) return std::nullopt;
        return partners[*jid];
    }
};

struct FakeContext : RecordContext {
    std::shared_ptr<FakeLookups> database = std::make_shared<FakeLookups>();
    std::int64_t unknown = 0;
    int calendarsOpened = 0;
    List<Contact> live, deleted;
    std::size_t calls = 0;

    std::shared_ptr<DatabaseLookups> lookups() const override { return database; }
    std::shared_ptr<DatabaseLookups> openCalendarLookups() override {
        ++calendarsOpened;
        return database;
    }
    std::int64_t nextUnknownNumber() override { return ++unknown; }
    const List<Contact>& liveContacts() const override { return live; }
    const List<Contact>& deletedContacts() const override { return deleted; }
    std::size_t deletedCallLogCount() const override { return calls; }
};

class Conversions : public testing::Test {
  protected:
    Conversions() {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }

    std::shared_ptr<Contact> addContact(List<Contact>& contacts, const char* nickName, Text number1,
                                        Text number3 = {}) {
        auto contact = std::make_shared<Contact>();
        contact->NickName = nickName;
        contact->ContactNo1 = std::move(number1);
        contact->ContactNo3 = std::move(number3);
        contacts.push_back(contact);
        return contact;
    }

    FakeContext context_;
    const RecordOrigin origin_{"stored", 4096, 2, CarvedSpace::Freeblock};
};

TEST_F(Conversions, MessageBecomesListRow) {
    Message message;
    message.HandleId = (std::int64_t{1} << 32) + 7;
    message.Address = "+1555";
    message.Date = "2013-01-01 10:00:00";
    message.Text = "hello";
    message.Service = "iMessage";
    message.Guid = "G";
    message.RowId = 12;
    message.Origin = origin_;
    const auto row = message.generateSMSObject(context_);
    EXPECT_EQ(row->SlNo, 0);
    EXPECT_EQ(row->RowID, -1);
    EXPECT_EQ(row->RowId, 0);
    EXPECT_EQ(row->handleID, 7);
    EXPECT_EQ(row->Address, "+1555");
    EXPECT_EQ(row->LocalTime, "2013-01-01 10:00:00");
    EXPECT_EQ(row->Message, "hello");
    EXPECT_EQ(row->Type, "Received from");
    EXPECT_EQ(row->service, "iMessage");
    EXPECT_EQ(row->GUID, "G");
    EXPECT_EQ(row->isChecked, 0);
    EXPECT_TRUE(row->isRecovered);
    ASSERT_TRUE(row->Origin);
    EXPECT_EQ(row->Origin->offset, 4096U);
    message.IsFromMe = true;
    EXPECT_EQ(message.generateSMSObject(context_)->Type, "Sent to");
}

TEST_F(Conversions, MessageAddressComesFromTheHandleOrIsNumbered) {
    context_.database->handles = {{1, "first"}, {2, "overruled"}, {4, ""}};
    context_.database->handlesById = {{2, "second"}};
    const std::pair<std::int64_t, const char*> cases[] = {
        {1, "first"}, {2, "second"}, {3, "unknown1"}, {4, "unknown2"}, {3, "unknown3"}};
    for (const auto& [handle, address] : cases) {
        Message message;
        message.HandleId = handle;
        EXPECT_EQ(message.generateSMSObject(context_)->Address, address);
    }
    context_.database = nullptr;
    EXPECT_EQ(Message().generateSMSObject(context_)->Address, "unknown4");
}

TEST_F(Conversions, CallTypesAndModes) {
    struct Case {
        std::int32_t flags;
        std::int64_t duration;
        bool originated;
        const char *type, *mode;
    };
    const Case cases[] = {
        {0, 0, false, "Incoming - Missed call", "Call"},
        {0, 5, false, "Incoming - Answered", "Call"},
        {4, -1, true, "Incoming - Answered", "Call"},
        {1, 5, false, "Outgoing - Answered", "Call"},
        {5, 0, false, "Outgoing - Not answered", "Call"},
        {8, 5, false, "Blocked call", "Call"},
        {8, 0, true, "Outgoing - FaceTime", "FaceTime"},
        {16, 0, false, "FaceTime", "FaceTime"},
        {20, 0, false, "Incoming - FaceTime", "FaceTime"},
        {21, 0, false, "Outgoing - FaceTime", "FaceTime"},
        {3, 9, false, "Dropped (Flag 3)", "Call"},
        {-2, 9, true, "Dropped (Flag -2)", "Call"},
    };
    for (const auto& c : cases) {
        CallHistory call;
        call.Flags = c.flags;
        call.Duration = c.duration;
        call.ZOriginated = c.originated;
        EXPECT_EQ(call.convertCallTypeFlagtoCallTypeString(), c.type) << c.flags;
        EXPECT_EQ(call.convertCallTypeFlagtoCallModeString(), c.mode) << c.flags;
    }
}

TEST_F(Conversions, CallBecomesListRow) {
    addContact(context_.live, "Ann", "0123456789");
    context_.calls = 4;
    CallHistory call;
    call.Address = "0123456789";
    call.Date = "2013-01-01 10:00:00";
    call.Duration = (std::int64_t{1} << 32) + 61;
    call.Origin = origin_;
    const auto row = call.generateCallLogObject(context_);
    EXPECT_EQ(row->SlNo, 5);
    EXPECT_EQ(row->Address, "0123456789");
    EXPECT_EQ(row->PhoneNumber, "0123456789");
    EXPECT_EQ(row->LocalTime, "2013-01-01 10:00:00");
    EXPECT_EQ(row->CallType, "Incoming - Answered");
    EXPECT_EQ(row->ContactName, "Ann");
    EXPECT_EQ(row->CallDuration, 61);
    EXPECT_EQ(row->CallMode, "Call");
    EXPECT_EQ(row->Origin->page, 2U);
}

TEST_F(Conversions, ContactNamesAreFoundByExactNumber) {
    addContact(context_.deleted, "carved", "555", "777");
    addContact(context_.live, "spaced", "01234\u00A056789");
    addContact(context_.live, "live", {}, "555");
    addContact(context_.live, "fourth", {})->ContactNo4 = "888";
    const std::pair<Text, const char*> cases[] = {
        {"0123456789", "spaced"}, {"555", "live"}, {"777", "carved"}, {"888", ""}, {"55", ""},
        {std::nullopt, ""},
    };
    for (const auto& [number, name] : cases) {
        EXPECT_EQ(CallHistory::getContactNamefromNumber(number, context_), name);
    }
    EXPECT_EQ(CallHistory::splittedTelNumber("12345"), "12345");
    EXPECT_EQ(CallHistory::splittedTelNumber("123456"), "12345\u00A06");
}

TEST_F(Conversions, ContactNameIsOneOfThree) {
    Contact contact;
    EXPECT_EQ(CallHistory::getContactName(contact), "");
    contact.LastName = "last";
    EXPECT_EQ(CallHistory::getContactName(contact), "last");
    contact.FirstName = "first";
    EXPECT_EQ(CallHistory::getContactName(contact), "first");
    contact.NickName = "nick";
    EXPECT_EQ(CallHistory::getContactName(contact), "nick");
}

TEST_F(Conversions, AppointmentBecomesListRow) {
    Appointment event;
    event.Summary = "dentist";
    event.Description = "bring card";
    event.LocationId = 9;
    event.StartTime = Date{3600};
    event.StartTimeZone = "_float";
    event.OriginalStartDate = "3600";
    event.UniqueIdentifier = "U";
    event.AllDay = true;
    event.Origin = origin_;
    const auto row = event.generateCalendarObject(context_);
    EXPECT_EQ(context_.calendarsOpened, 1);
    EXPECT_EQ(row->SlNo, 0);
    EXPECT_EQ(row->Summary, "dentist");
    EXPECT_EQ(row->Location, "at 9");
    EXPECT_EQ(row->Description, "bring card");
    EXPECT_EQ(row->StartDate, "2001-01-01 01:00:00");
    EXPECT_EQ(row->Start_TimeZone, "_float");
    EXPECT_EQ(row->EndDate, "");
    EXPECT_EQ(row->AllDay, "1");
    EXPECT_EQ(row->OrginalDate, "3600");
    EXPECT_EQ(row->UniqueIdentifier, "U");
    EXPECT_EQ(row->Origin->page, 2U);
    EXPECT_EQ(event.StartTimeZoneText(), "");
    event.StartTimeZone = "Europe/Rome";
    EXPECT_EQ(event.StartTimeZoneText(), "Europe/Rome");
}

TEST_F(Conversions, LongUrlsAreShortened) {
    const std::pair<Text, const char*> cases[] = {
        {std::nullopt, ""},
        {"http://a.example", "a.example..."},  // 16 characters
        {"http://a.exampl", "http://a.exampl"},
        {"https://a.example/page", "a.example..."},
    };
    for (const auto& [url, shown] : cases) {
        Appointment event;
        event.Url = url;
        EXPECT_EQ(event.UrlShort(), shown);
    }
}

TEST_F(Conversions, WhatsAppMessageBecomesListRow) {
    struct Case {
        Text from, pushName;
        bool sent;
        const char *asked, *name;
        bool havingName;
    };
    const Case cases[] = {
        {"a@s", "Ann", false, "a@s", "Ann A", true},
        {"a@s", {}, true, "a@s", "Ann A", true},
        {"", "Ann", true, "", " ", true},
        {{}, "Ann", false, "b@s", "", false},
        {{}, {}, true, "b@s", "", false},
    };
    context_.database->partners = {{"a@s", "Ann A"}, {"b@s", ""}};
    for (const auto& c : cases) {
        WhatsAppMessage message;
        message.ZFromJid = c.from;
        message.ZToJid = "b@s";
        message.ZPushName = c.pushName;
        message.ZText = "hi";
        message.Date = "d";
        message.Origin = origin_;
        const auto row = message.generateWhatsAppObject(context_);
        EXPECT_EQ(row->isSent, c.sent);
        EXPECT_EQ(context_.database->askedPartners.back(), c.asked);
        EXPECT_EQ(row->ContactName, c.name);
        EXPECT_EQ(row->ishavingName, c.havingName);
        EXPECT_EQ(row->FromMsgID, c.from);
        EXPECT_EQ(row->ToMsgID, "b@s");
        EXPECT_EQ(row->zText, "hi");
        EXPECT_EQ(row->MessageDate, "d");
        EXPECT_EQ(row->PhoneNo, std::nullopt);
        EXPECT_TRUE(row->Origin);
    }
}

TEST_F(Conversions, WhatsAppNumberStandsBeforeTheLastAt) {
    const std::pair<Text, const char*> cases[] = {
        {"123@s.net", "123"}, {"a@b@c", "a@b"}, {"@s", ""}, {"123", ""}, {std::nullopt, ""}};
    for (const auto& [jid, number] : cases) {
        WhatsAppMessage message;
        message.ZToJid = jid;
        EXPECT_EQ(message.GetZMessageNumberOrEmpty(), number);
        message.ZToJid.reset();
        message.ZFromJid = jid;
        message.IsFromMe = true;
        EXPECT_EQ(message.GetZMessageNumberOrEmpty(), number);
    }
}

// A semicolon behind "&nbsp" stays: deliberate.
TEST(NoteBodies, LoseThreeMarksOfTheirHtml) {
    const std::pair<Text, const char*> cases[] = {
        {"a&nbsp;b", "a ;b"},        {"a&nbsp&nbspb", "a  b"},
        {"a<br>b<div>c", "a\nb\nc"}, {"<b>a</b></div><BR>", "<b>a</b></div><BR>"},
        {"a&<br>nbsp", "a&\nnbsp"},  {std::nullopt, ""},
    };
    for (const auto& [content, plain] : cases) {
        NoteBody body;
        body.Content = content;
        EXPECT_EQ(body.plainContent(), plain);
    }
}

TEST(NoteBodies, BecomeNotesNamedByTheirBeginning) {
    const std::pair<Text, Text> cases[] = {
        {"12345678", "12345678"},
        {"123456789", "1234567..."},
        {"", ""},
        {"\u00E4\u00F6\u00FC\u00E4\u00F6\u00FC\u00E4\u00F6\u00FC",
         "\u00E4\u00F6\u00FC\u00E4\u00F6\u00FC\u00E4..."},
        {std::nullopt, std::nullopt},
    };
    for (const auto& [content, title] : cases) {
        const auto body = std::make_shared<NoteBody>();
        body->Content = content;
        body->Recovered = content.has_value();
        const auto note = NoteBody::ParseContentToGetNote(body);
        EXPECT_EQ(note->Title, title);
        EXPECT_EQ(note->noteBody, body);
        EXPECT_EQ(note->Recovered, body->Recovered);
    }
}

TEST(Equality, AbsentTextsAreNeverEqual) {
    SMS a, b;
    EXPECT_FALSE(a.isRoughlyEqual(b));
    a.GUID = b.GUID = "";
    EXPECT_TRUE(a.isRoughlyEqual(b));
    CallHistory call, other;
    call.Address = other.Address = "1";
    EXPECT_FALSE(call.IsEqual(other));
    call.Date = other.Date = "d";
    EXPECT_TRUE(call.IsEqual(other));
    Appointment event, same;
    event.Summary = same.Summary = "s";
    event.OriginalStartDate = same.OriginalStartDate = "1";
    EXPECT_FALSE(event.IsEqual(same));
    event.StartTimeZone = same.StartTimeZone = "";
    EXPECT_TRUE(event.IsEqual(same));
    WhatsApp row, rest;
    row.zText = "";
    EXPECT_TRUE(row.isRoughlyEqual(rest));
    row.ToMsgID = "x";
    EXPECT_FALSE(row.isRoughlyEqual(rest));
}

TEST(Equality, WhatsAppMessagesCompareSixTexts) {
    using W = WhatsAppMessage;
    const auto compared = {&W::ZText,  &W::_zmesssageDate, &W::ZFromJid,
                           &W::ZToJid, &W::ZStandZAid,     &W::ZPushName};
    W full;
    for (const auto member : compared) full.*member = "x";
    EXPECT_TRUE(full.IsEqual(full));
    for (const auto member : compared) {
        W changed = full;
        changed.*member = "y";
        EXPECT_FALSE(full.IsEqual(changed));
        changed.*member = std::nullopt;
        EXPECT_FALSE(changed.IsEqual(changed));
    }
}

}  // namespace
}  // namespace salvor
