#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <vector>

#include "backup/BackupSource.h"
#include "report/RecordJson.h"
#include "report/ScanReport.h"
#include "scan/Categories.h"
#include "tests/export/TempFolder.h"

namespace salvor {
namespace {

using Json = nlohmann::ordered_json;

class Report : public testing::Test {
  protected:
    Json report() const { return Json::parse(ScanReport::text(state_)); }

    template <class Record>
    static Json recordOf(const Record& record) {
        std::ostringstream text;
        json::JsonStream out(text);
        json::writeRecord(out, record);
        out.flush();
        return Json::parse(text.str());
    }

    /// The keys of an object, one behind the other.
    static std::string keysOf(const Json& object) {
        std::string keys;
        for (const auto& [key, value] : object.items()) keys += key + " ";
        return keys;
    }

    static std::string listKeys(int Places::*order, NamedList RowKind::*which) {
        std::string keys;
        for (const auto* category : categoriesBy(order)) {
            for (const auto& kind : category->kinds)
                if (kind.listed) keys += (kind.*which).name + std::string(" ");
        }
        return keys;
    }

    ScanState state_;
};

TEST_F(Report, HasEverySectionInOrder) {
    const Json json = report();
    EXPECT_EQ(keysOf(json),
              "format program scannedAt timeZone asked complete device source files counts live "
              "deleted conversations status ");
    EXPECT_EQ(keysOf(json["live"]),
              listKeys(&Places::liveKey, &RowKind::live) +
                  "MapContent AccountContent ApplicationContent UserDictContent ");
    EXPECT_EQ(keysOf(json["deleted"]), listKeys(&Places::deletedKey, &RowKind::deleted));
    EXPECT_TRUE(keysOf(json["counts"]).starts_with("SMSCount DeletedSMSCount iMessageCount "));
    EXPECT_EQ(json["counts"].size(), 22U);
    EXPECT_EQ(json["source"]["databases"].size(), databaseNames().size());
    EXPECT_EQ(json["live"]["SMSContent"], Json::array());
}

TEST_F(Report, TellsDeviceSourceCountsAndStatus) {
    state_.deviceInfo.DeviceName = "";
    state_.deviceInfo.iOSMajorVersion = 7;
    state_.BACKUP_DIRECTORY = "/b";
    state_.SMS_DATABASE = "3d0d";
    state_.DeletedSMSCount = 3;
    state_.updateStatus(StatusCode::Running, "SMS");
    state_.updateStatus(StatusCode::Result, "12 \"SMS\"\n");
    const Json json = report();
    EXPECT_EQ(json["device"]["DeviceName"], "");
    EXPECT_TRUE(json["device"]["SerialNumber"].is_null());
    EXPECT_EQ(json["device"]["iOSMajorVersion"], 7);
    EXPECT_EQ(json["device"]["isEncrypted"], false);
    EXPECT_EQ(json["source"]["backup"], "/b");
    EXPECT_EQ(json["source"]["databases"]["SMS_DATABASE"], "3d0d");
    EXPECT_EQ(json["counts"]["DeletedSMSCount"], 3);
    EXPECT_EQ(json["status"], Json::parse(R"([[0, "SMS"], [3, "12 \"SMS\"\n"]])"));
}

TEST_F(Report, CarvedRowsTellTheirOrigin) {
    add(state_.SMSContent).Message = "live";
    auto& deleted = add(state_.DeletedSMS);
    deleted.isRecovered = true;
    deleted.Origin = RecordOrigin{"3d0d", 123456, 31, CarvedSpace::FreeList};
    const Json json = report();
    EXPECT_FALSE(json["live"]["SMSContent"][0].contains("origin"));
    EXPECT_TRUE(json["live"]["SMSContent"][0]["GUID"].is_null());
    EXPECT_EQ(json["deleted"]["DeletedSMS"][0]["isRecovered"], true);
    EXPECT_EQ(json["deleted"]["DeletedSMS"][0]["origin"],
              Json::parse(R"({"database": "3d0d", "offset": 123456, "page": 31,
                              "space": "free-list"})"));
}

TEST_F(Report, BackReferencesAreWrittenAsKeys) {
    auto& conversation = add(state_.Conversations);
    conversation.ChatId = 5;
    conversation.Names = {"Ann"};
    ContactPhoneNumber phone;
    phone.PhoneNumber = "+2";
    phone.GooglePhoneNumber = "+3";
    conversation.PhoneNumbers = {std::string("+1"), phone, ContactPhoneNumber{}};
    auto& message = add(conversation.Messages);
    message.ConversationContact = state_.Conversations[0];
    message.MessageAttachment = std::make_shared<MessageAttachment>();
    message.MessageAttachment->Filename = "f.jpg";
    add(conversation.Messages);
    const Json json = report()["conversations"][0];
    EXPECT_EQ(json["ChatId"], 5);
    EXPECT_EQ(json["PhoneNumbers"], Json::parse(R"(["+1", "+2", null])"));
    EXPECT_EQ(json["Messages"][0]["ConversationContact"], 5);
    EXPECT_EQ(json["Messages"][0]["MessageAttachment"]["Filename"], "f.jpg");
    EXPECT_TRUE(json["Messages"][1]["ConversationContact"].is_null());
    EXPECT_TRUE(json["Messages"][1]["MessageAttachment"].is_null());

    CallHistory call;
    EXPECT_TRUE(recordOf(call)["contact"].is_null());
    call.contact = std::make_shared<Contact>();
    call.contact->FullName = "Ann";
    EXPECT_EQ(recordOf(call)["contact"], "Ann");
}

TEST_F(Report, WritesPicturesAndWhatJsonCannotHold) {
    add(state_.Photos).Name = "a";
    add(state_.Videos).Location = "b";
    add(state_.SMSContent).Message = "bad \xFF byte";
    add(state_.NotesContent).OriginalCreationDate = std::numeric_limits<double>::quiet_NaN();
    const Json json = report()["live"];
    EXPECT_EQ(json["Photos"][0], Json::parse(R"({"Name": "a", "Location": null, "isChecked": 1})"));
    EXPECT_EQ(json["Videos"][0], Json::parse(R"({"Name": null, "Location": "b", "isChecked": 1})"));
    EXPECT_EQ(json["SMSContent"][0]["Message"], "bad \uFFFD byte");
    EXPECT_TRUE(json["NotesContent"][0]["OriginalCreationDate"].is_null());
}

// What a scan of a backup told, and the digest of "abc".
TEST_F(Report, TellsTheScanAndWhatCouldBeRead) {
    const TempFolder folder;
    std::ofstream(folder / storedNameOf(Stored::CallsBefore8)) << "abc";
    useBackup(state_, folder.path());
    ::setenv("TZ", "Europe/Berlin", 1);
    state_.run.dataType = codeOf(Category::Calls);
    state_.run.startedAt = 1325376000;
    state_.beginFiles(codeOf(Category::Calls));
    state_.readingEnded(storedNameOf(Stored::CallsBefore8),
                        {ReadingEnd::Kind::Budget, "too many rows", 7});
    const Json json = report();
    EXPECT_EQ(json["format"], 1);
    EXPECT_EQ(json["scannedAt"], "2012-01-01T00:00:00Z");
    EXPECT_EQ(json["timeZone"], "Europe/Berlin");
    EXPECT_EQ(json["asked"], Json::parse(R"(["calls"])"));
    EXPECT_EQ(json["complete"], false);
    EXPECT_EQ(json["files"], Json::parse(R"([
        {"category": "calls", "storedName": "2b2b0084a1bc3a5ac8c27afdf14afb42c61a19ca",
         "domain": "WirelessDomain", "path": "Library/CallHistory/call_history.db", "size": 3,
         "sha256": "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
         "read": "partly", "reason": "too many rows; 7 rows were read until then"},
        {"category": "calls", "storedName": "5a4935c78a5255723f707230a451d79c540d2741",
         "domain": "HomeDomain", "path": "Library/CallHistoryDB/CallHistory.storedata",
         "size": null, "sha256": null, "read": "absent", "reason": null}])"));
}

TEST_F(Report, DeletedRowsTellWhichLiveRowIsTheSame) {
    const auto text = [](auto& row, const char* guid, const char* message, const char* time) {
        row.GUID = guid != nullptr ? Text(guid) : Text();
        row.Message = message;
        row.LocalTime = time;
    };
    struct Case {
        const char* guid;
        const char* message;
        const char* time;
        Json twin;
    };
    constexpr auto kTime = "2012-03-04 05:06:07";
    const Case cases[] = {
        {"G1", "another text", "", 1},
        {"G9", "two lines", kTime, nullptr},
        {nullptr, "two\nlines", kTime, 2},
        {nullptr, "twolines", "2012-03-04 05:06:08", nullptr},
        {nullptr, "twolines", "2043-03-05 05:06:07", 2},  // Unix seconds read as seconds since 2001
        {nullptr, "", kTime, nullptr},
    };
    ::setenv("TZ", "UTC", 1);
    text(add(state_.SMSContent), "G1", "one", kTime);
    text(add(state_.SMSContent), nullptr, "twolines", kTime);
    text(add(state_.SMSContent), nullptr, "", kTime);
    for (std::int32_t i = 0; i < 3; ++i)
        state_.SMSContent[static_cast<std::size_t>(i)]->SlNo = i + 1;
    for (const auto& one : cases) text(add(state_.DeletedSMS), one.guid, one.message, one.time);
    // Rows without a serial number are told by their place.
    for (auto* list : {&state_.WhatsAppContent, &state_.DeletedWhatsApp}) {
        add(*list).zText = list == &state_.WhatsAppContent ? "first" : "second";
        auto& row = add(*list);
        row.zText = "same";
        row.MessageDate = kTime;
    }
    const Json json = report()["deleted"];
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(json["DeletedSMS"][i]["alsoLive"], cases[i].twin) << i;
    EXPECT_TRUE(json["DeletedWhatsApp"][0]["alsoLive"].is_null());
    EXPECT_EQ(json["DeletedWhatsApp"][1]["alsoLive"], 2);
}

// Byte for byte what the library writes, but for characters that a terminal would obey.
TEST(JsonStream, WritesNumbersAndTextsAsTheLibraryDoes) {
    std::ostringstream text;
    std::string expected;
    json::JsonStream out(text);
    const auto dump = [&expected](const Json& value) {
        expected += value.dump(-1, ' ', false, Json::error_handler_t::replace);
    };
    using Limits = std::numeric_limits<double>;
    for (const double number :
         {0.0, -0.0, 1.0, -1.0, 0.1, 398000000.25, 4e8, 999999999999999.0, 1e15, -1e15, 1e16, 1e300,
          5e-324, 123456789012345.6, Limits::quiet_NaN(), Limits::infinity(), Limits::max()}) {
        for (const double signedNumber : {number, -number}) {
            out.number(signedNumber);
            dump(signedNumber);
        }
    }
    for (const auto number : {std::numeric_limits<std::int64_t>::min(), std::int64_t{-7}}) {
        out.number(number);
        dump(number);
    }
    out.number(std::numeric_limits<std::uint64_t>::max());
    dump(std::numeric_limits<std::uint64_t>::max());
    out.number(true);
    dump(true);
    for (const char* value : {"", "plain ~", "\"quoted\"", "back\\slash", "\n\t\x01",
                              "\u00E4 \u200D \U0001F600", "bad \xFF", "cut \xF0\x9F"}) {
        out.text(value);
        dump(value);
    }
    out.text("\x7F\u009B\u200E\u202E\u2066\uFEFF\u00A0");
    expected += R"("\u007f\u009b\u200e\u202e\u2066\ufeff)"
                "\u00A0\"";
    out.flush();
    EXPECT_EQ(text.str(), expected);
}

TEST_F(Report, EndsEarlyWhenStoppedOrWithoutRoom) {
    for (int i = 0; i < 3000; ++i) add(state_.SMSContent).Message = std::string(100, 'x');
    add(state_.Conversations);
    std::vector<std::size_t> steps;
    WritingReport watch;
    watch.progress = [&steps](std::size_t done, std::size_t total) {
        EXPECT_EQ(total, 3001U);
        steps.push_back(done);
    };
    std::ostringstream whole;
    EXPECT_TRUE(ScanReport::write(state_, whole, watch));
    EXPECT_EQ(whole.str(), ScanReport::text(state_));
    EXPECT_EQ(steps.size(), 3001U);
    EXPECT_EQ(steps.back(), 3001U);

    std::stop_source stop;
    watch.stop = stop.get_token();
    watch.progress = [&stop](std::size_t done, std::size_t) {
        if (done == 1000) stop.request_stop();
    };
    std::ostringstream part;
    EXPECT_FALSE(ScanReport::write(state_, part, watch));
    EXPECT_LT(part.str().size(), whole.str().size() / 2);
    EXPECT_TRUE(whole.str().starts_with(part.str()));

    std::ostream nowhere(nullptr);
    EXPECT_FALSE(ScanReport::write(state_, nowhere));
}

}  // namespace
}  // namespace salvor
