#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

#include "records/Appointment.h"
#include "records/CallHistory.h"
#include "records/Message.h"
#include "records/Note.h"
#include "records/NoteBody.h"
#include "records/SMS.h"
#include "records/WhatsAppMessage.h"
#include "tests/records/RecordFixture.h"
#include "tests/support/Told.h"

namespace salvor {
namespace {

/// What a carved record becomes in its list. Every field that a conversion fills is compared.
class Conversions : public testing::Test {
  protected:
    Conversions() {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }

    template <class Row>
    void expectRow(const Row& row, const std::string& fields) const {
        EXPECT_EQ(told(row), fields);
        ASSERT_TRUE(row.Origin);
        EXPECT_EQ(row.Origin->offset, origin_.offset);
    }

    FakeContext context_;
    const RecordOrigin origin_{"stored", 4096, 2, CarvedSpace::Freeblock};
};

TEST_F(Conversions, OfAMessage) {
    Message message;
    message.HandleId = (std::int64_t{1} << 32) + 7;
    message.Address = "+1555";
    message.Date = "2013-01-01 10:00:00";
    message.Text = "hello";
    message.Service = "iMessage";
    message.Guid = "G";
    message.RowId = 12;
    message.Origin = origin_;
    expectRow(*message.generateSMSObject(context_),
              "RowID=-1|handleID=7|Address=+1555|LocalTime=2013-01-01 10:00:00|Message=hello|"
              "Type=Received from|service=iMessage|GUID=G|isRecovered=true");
    message.IsFromMe = true;
    const auto row = message.generateSMSObject(context_);
    EXPECT_EQ(row->Type, "Sent to");
    EXPECT_EQ(std::pair(row->RowID, row->RowId), std::pair(-1, 0));
}

TEST_F(Conversions, TakeAMessagesAddressFromItsHandleOrNumberIt) {
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

TEST_F(Conversions, OfACall) {
    context_.live = {contactOf("Ann", {"0123456789"})};
    context_.calls = 4;
    CallHistory call;
    call.Address = "0123456789";
    call.Date = "2013-01-01 10:00:00";
    call.Duration = (std::int64_t{1} << 32) + 61;
    call.Origin = origin_;
    expectRow(*call.generateCallLogObject(context_),
              "SlNo=5|Address=0123456789|LocalTime=2013-01-01 10:00:00|PhoneNumber=0123456789|"
              "CallType=Incoming - Answered|ContactName=Ann|CallDuration=61|CallMode=Call");
}

TEST_F(Conversions, NameCallTypesAndModes) {
    const struct {
        std::int32_t flags;
        std::int64_t duration;
        bool originated;
        std::string type;
    } cases[] = {{0, 0, false, "Incoming - Missed call"},  {0, 5, false, "Incoming - Answered"},
                 {4, -1, true, "Incoming - Answered"},     {1, 5, false, "Outgoing - Answered"},
                 {5, 0, false, "Outgoing - Not answered"}, {8, 5, false, "Blocked call"},
                 {8, 0, true, "Outgoing - FaceTime"},      {16, 0, false, "FaceTime"},
                 {20, 0, false, "Incoming - FaceTime"},    {21, 0, false, "Outgoing - FaceTime"},
                 {3, 9, false, "Dropped (Flag 3)"},        {-2, 9, true, "Dropped (Flag -2)"}};
    for (const auto& [flags, duration, originated, type] : cases) {
        CallHistory call;
        call.Flags = flags;
        call.Duration = duration;
        call.ZOriginated = originated;
        EXPECT_EQ(call.convertCallTypeFlagtoCallTypeString(), type) << flags;
        EXPECT_EQ(call.convertCallTypeFlagtoCallModeString(),
                  type.ends_with("FaceTime") ? "FaceTime" : "Call")
            << flags;
    }
}

TEST_F(Conversions, OfAnAppointment) {
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
    expectRow(*event.generateCalendarObject(context_),
              "UniqueIdentifier=U|Summary=dentist|Location=at 9|Description=bring card|"
              "StartDate=2001-01-01 01:00:00|Start_TimeZone=_float|EndDate=|AllDay=1|"
              "OrginalDate=3600");
    EXPECT_EQ(context_.calendarsOpened, 1);
    EXPECT_EQ(event.StartTimeZoneText(), "");
    event.StartTimeZone = "Europe/Rome";
    EXPECT_EQ(event.StartTimeZoneText(), "Europe/Rome");

    const std::pair<Text, const char*> urls[] = {
        {std::nullopt, ""},
        {"http://a.example", "a.example..."},  // 16 characters
        {"http://a.exampl", "http://a.exampl"},
        {"https://a.example/page", "a.example..."},
    };
    for (const auto& [url, shown] : urls) {
        event.Url = url;
        EXPECT_EQ(event.UrlShort(), shown);
    }
}

TEST_F(Conversions, OfAWhatsAppMessage) {
    struct Case {
        Text from, pushName;
        const char *asked, *fields;
    };
    const Case cases[] = {
        {"a@s", "Ann", "a@s", "FromMsgID=a@s|{}|ContactName=Ann A|ishavingName=true"},
        {"a@s", {}, "a@s", "FromMsgID=a@s|{}|ContactName=Ann A|isSent=true|ishavingName=true"},
        {"", "Ann", "", "FromMsgID=|{}|ContactName= |isSent=true|ishavingName=true"},
        {{}, "Ann", "b@s", "{}|ContactName="},
        {{}, {}, "b@s", "{}|ContactName=|isSent=true"},
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
        expectRow(*message.generateWhatsAppObject(context_),
                  "MessageDate=d|" + fmt::format(fmt::runtime(c.fields), "ToMsgID=b@s|zText=hi"));
        EXPECT_EQ(context_.database->askedPartners.back(), c.asked);
    }
}

TEST_F(Conversions, FindAWhatsAppNumberBeforeTheLastAt) {
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

// Kept: nbsp-semicolon.
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
    const std::pair<Text, Text> cases[] = {{"12345678", "12345678"},
                                           {"123456789", "1234567..."},
                                           {"", ""},
                                           {"äöüäöüäöü", "äöüäöüä..."},
                                           {std::nullopt, std::nullopt}};
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

TEST(Records, DenyTheSecondOfTheirRecoveredFlagsAlone) {
    baseRecoveryObject record;
    record.Recovered = true;
    EXPECT_TRUE(record.NotRecovered());
    record.isRecovered = true;
    record.Recovered = false;
    EXPECT_FALSE(record.NotRecovered());
}

/// Two records are equal while these texts are, and none of them is absent.
template <class Record>
void expectCompared(std::initializer_list<Text Record::*> compared) {
    Record full;
    for (const auto member : compared) full.*member = "x";
    EXPECT_TRUE(full.IsEqual(full));
    for (const auto member : compared) {
        Record changed = full;
        changed.*member = "y";
        EXPECT_FALSE(full.IsEqual(changed));
        changed.*member = std::nullopt;
        EXPECT_FALSE(changed.IsEqual(changed));
    }
}

TEST(Equality, NeedsTextsThatAreThere) {
    expectCompared({&CallHistory::Address, &CallHistory::Date});
    using A = Appointment;
    expectCompared({&A::Summary, &A::OriginalStartDate, &A::StartTimeZone});
    using W = WhatsAppMessage;
    expectCompared(
        {&W::ZText, &W::_zmesssageDate, &W::ZFromJid, &W::ZToJid, &W::ZStandZAid, &W::ZPushName});
    SMS a, b;
    EXPECT_FALSE(a.isRoughlyEqual(b));
    a.GUID = b.GUID = "";
    EXPECT_TRUE(a.isRoughlyEqual(b));
    // Of rows of WhatsApp, an absent text equals an empty one.
    WhatsApp row, other;
    row.zText = "";
    EXPECT_TRUE(row.isRoughlyEqual(other));
    row.ToMsgID = "x";
    EXPECT_FALSE(row.isRoughlyEqual(other));
}

}  // namespace
}  // namespace salvor
