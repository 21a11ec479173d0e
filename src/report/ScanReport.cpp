#include "report/ScanReport.h"

#include <iterator>

#include "report/RecordJson.h"
#include "scan/ScanState.h"

namespace salvor {
namespace {

using json::Json;

struct DatabaseName {
    const char* name;
    std::string ScanState::*member;
};

#define SALVOR_MEMBER(name) \
    { #name, &ScanState::name }

constexpr DatabaseName databases[] = {
    SALVOR_MEMBER(SMS_DATABASE),          SALVOR_MEMBER(ADDRESSBOOK_DATABASE),
    SALVOR_MEMBER(CALENDAR_DATABASE),     SALVOR_MEMBER(NOTES_DATABASE),
    SALVOR_MEMBER(CALLHISTORY_DATABASE),  SALVOR_MEMBER(MAPHISTORY_DATABASE),
    SALVOR_MEMBER(DYNAMICDIT_DATABASE),   SALVOR_MEMBER(ACCOUNT_DATABASE),
    SALVOR_MEMBER(KEYCHAIN_DATABASE),     SALVOR_MEMBER(INTERNET_HISTROY_DATABASE),
    SALVOR_MEMBER(APPLICATIONS_DATABASE), SALVOR_MEMBER(WHATSAPP_DATABASE),
    SALVOR_MEMBER(CONSOLIDATE_DATABASE),
};

struct CounterName {
    const char* name;
    ScanState::Counter ScanState::*member;
};

constexpr CounterName counters[] = {
    SALVOR_MEMBER(SMSCount),      SALVOR_MEMBER(DeletedSMSCount),
    SALVOR_MEMBER(iMessageCount), SALVOR_MEMBER(DeletediMessageCount),
    SALVOR_MEMBER(PhotosCount),   SALVOR_MEMBER(DeletedPhotosCount),
    SALVOR_MEMBER(VideosCount),   SALVOR_MEMBER(DeletedVideosCount),
    SALVOR_MEMBER(ContactCount),  SALVOR_MEMBER(DeletedContactCount),
    SALVOR_MEMBER(CallLogCount),  SALVOR_MEMBER(DeletedCallLogCount),
    SALVOR_MEMBER(FaceTimeCount), SALVOR_MEMBER(DeletedFaceTimeCount),
    SALVOR_MEMBER(WhatsAppCount), SALVOR_MEMBER(DeletedWhatsAppCount),
    SALVOR_MEMBER(NoteCount),     SALVOR_MEMBER(DeletedNoteCount),
    SALVOR_MEMBER(InternetCount), SALVOR_MEMBER(DeletedInternetCount),
    SALVOR_MEMBER(CalendarCount), SALVOR_MEMBER(DeletedCalendarCount),
};

#undef SALVOR_MEMBER

// No text should hold invalid UTF-8 here; one that does must not cost the whole report.
std::string dump(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// Writes the outer objects and arrays by hand and each record through the JSON library.
class Writer {
  public:
    void open(const char* key, char bracket) {
        next(key);
        text_ += bracket;
        first_ = true;
        ++depth_;
    }
    void close(char bracket) {
        --depth_;
        if (!first_) newLine();
        text_ += bracket;
        first_ = false;
    }
    void value(const char* key, const Json& json) {
        next(key);
        text_ += dump(json);
    }
    template <class Row>
    void list(const char* key, const List<Row>& rows) {
        open(key, '[');
        // Rows are written whole; a record inside another one may be its name alone.
        for (const auto& row : rows)
            value(nullptr, row != nullptr ? json::fromRecord(*row) : json::Json(nullptr));
        close(']');
    }
    std::string finish() && { return std::move(text_) + "\n"; }

  private:
    void next(const char* key) {
        if (!first_) text_ += ',';
        if (depth_ > 0) newLine();
        first_ = false;
        if (key != nullptr) text_.append("\"").append(key).append("\": ");
    }
    void newLine() { text_.append("\n").append(2 * depth_, ' '); }

    std::string text_;
    std::size_t depth_ = 0;
    bool first_ = true;
};

void writeSource(Writer& writer, const ScanState& state) {
    writer.open("source", '{');
    writer.value("backup", state.BACKUP_DIRECTORY);
    writer.open("databases", '{');
    for (const auto& [name, member] : databases) writer.value(name, state.*member);
    writer.close('}');
    writer.close('}');
}

void writeCounts(Writer& writer, const ScanState& state) {
    writer.open("counts", '{');
    for (const auto& [name, member] : counters) writer.value(name, (state.*member).load());
    writer.close('}');
}

void writeLive(Writer& writer, const ScanState& state) {
    writer.open("live", '{');
    writer.list("SMSContent", state.SMSContent);
    writer.list("ContactContent", state.ContactContent);
    writer.list("CallLogContent", state.CallLogContent);
    writer.list("WhatsAppContent", state.WhatsAppContent);
    writer.list("NotesContent", state.NotesContent);
    writer.list("CalendarContent", state.CalendarContent);
    writer.list("InternetContent", state.InternetContent);
    writer.list("Photos", state.Photos);
    writer.list("Videos", state.Videos);
    writer.list("MapContent", state.MapContent);
    writer.list("AccountContent", state.AccountContent);
    writer.list("ApplicationContent", state.ApplicationContent);
    writer.list("UserDictContent", state.UserDictContent);
    writer.close('}');
}

void writeDeleted(Writer& writer, const ScanState& state) {
    writer.open("deleted", '{');
    writer.list("DeletedSMS", state.DeletedSMS);
    writer.list("DeletedContact", state.DeletedContact);
    writer.list("DeletedCallLog", state.DeletedCallLog);
    writer.list("DeletedWhatsApp", state.DeletedWhatsApp);
    writer.list("DeletedNotes", state.DeletedNotes);
    writer.list("DeletedCalendar", state.DeletedCalendar);
    writer.list("DeletedPhotos", state.DeletedPhotos);
    writer.list("DeletedVideos", state.DeletedVideos);
    writer.list("DeletedInternet", state.DeletedInternet);
    writer.close('}');
}

}  // namespace

nlohmann::ordered_json ScanReport::device(const DeviceInfo& device) {
    return json::fromRecord(device);
}

std::string ScanReport::text(const ScanState& state) {
    Writer writer;
    writer.open(nullptr, '{');
    writer.value("device", device(state.deviceInfo));
    writeSource(writer, state);
    writeCounts(writer, state);
    writeLive(writer, state);
    writeDeleted(writer, state);
    writer.list("conversations", state.Conversations);
    writer.open("status", '[');
    for (const auto& [code, message] : state.statusHistory()) {
        writer.value(nullptr, Json::array({code, message}));
    }
    writer.close(']');
    writer.close('}');
    return std::move(writer).finish();
}

}  // namespace salvor
