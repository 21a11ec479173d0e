#include <string_view>
#include <unordered_map>

#include "live/DAOs.h"
#include "live/RowReading.h"
#include "sql/SqlFormat.h"
#include "util/DateUtils.h"

namespace salvor {
namespace {

constexpr auto kMessages = "SELECT * FROM ZWAMESSAGE ORDER BY ZMESSAGEDATE ASC";
constexpr auto kMessagesOf =
    "SELECT ZMESSAGEDATE,ZFROMJID,ZTOJID,ZTEXT FROM ZWAMESSAGE WHERE ZTEXT <>'' AND (ZFROMJID = ? "
    "OR ZPUSHNAME = ?)";
// Texts alone, in the order in which the table holds them: the first partner of a name counts.
constexpr auto kPartners =
    "SELECT ZCONTACTJID, ZPARTNERNAME FROM ZWACHATSESSION NOT INDEXED WHERE ZCONTACTJID >= '' AND "
    "ZCONTACTJID < x''";
constexpr auto kRowIds = "SELECT Z_PK as ROWID  FROM ZWAMESSAGE";

constexpr std::string_view kUserServer = "@s.whatsapp.net";

/// A bare telephone number as the address of a user.
std::string userJid(std::string_view address) {
    return std::string(address).append(address.find('@') == address.npos ? kUserServer : "");
}

/// "+" and the number of a user's address; absent for groups and broadcasts.
Text shownNumber(const std::string& jid) {
    if (!jid.ends_with(kUserServer)) return std::nullopt;
    return formatSql("+%@", {Text(jid.substr(0, jid.size() - kUserServer.size()))});
}

void fillMessage(const ResultSet& row, WhatsApp& message) {
    message.MessageDate =
        row.columnIsNull("ZMESSAGEDATE")
            ? " "
            : DateUtils::doubleIOSDateTimeToString(row.doubleForColumn("ZMESSAGEDATE"));
    message.FromMsgID = row.stringForColumn("ZFROMJID");
    message.ToMsgID = row.stringForColumn("ZTOJID");
    message.zText = row.stringForColumn("ZTEXT");
}

DAOs::PartnerNames readPartnerNames(FMDBUtils& database) {
    constexpr std::size_t kRoomOfANode = 64;
    DAOs::PartnerNames names;
    auto rows = database.executeQuery(kPartners);
    rows.keepsOfEachRow(kRoomOfANode);
    while (rows.next()) {
        if (const auto jid = rows.stringForColumn("ZCONTACTJID"))
            names.try_emplace(jid, rows.stringForColumn("ZPARTNERNAME").value_or(""));
    }
    return names;
}

Text partnerName(const DAOs::PartnerNames& names, const Text& jid) {
    const auto found = names.find(jid);
    return found == names.end() ? Text("") : found->second;
}

/// Names the partner of each message: the sender, or the recipient where no sender is given.
void nameMessages(FMDBUtils& database, const List<WhatsApp>& messages) {
    const auto names = readPartnerNames(database);
    for (const auto& message : messages) {
        const auto& address = message->FromMsgID ? message->FromMsgID : message->ToMsgID;
        message->ContactName = "";
        if (!address || address->empty()) continue;
        const auto jid = userJid(*address);
        message->ContactName = partnerName(names, jid);
        message->ishavingName = !message->ContactName->empty();
        message->PhoneNo = shownNumber(jid);
    }
}

}  // namespace

List<WhatsApp> DAOs::GetWhatsAppLog() {
    const auto database = openCategory(state_.WHATSAPP_DATABASE);
    auto list = readRows<WhatsApp>(database->executeList({kMessages}),
                                   [](const ResultSet& row, WhatsApp& message) {
                                       fillMessage(row, message);
                                       message.isSent = row.boolForColumn("ZISFROMME");
                                   });
    nameMessages(*database, list);
    append(state_.AllWhatsAppContent, list);
    state_.WhatsAppCount = static_cast<std::int32_t>(list.size());
    return list;
}

List<WhatsApp> DAOs::GetWhatsApp(const Text& contactJid) {
    if (!contactJid) return {};
    const std::string jid(*contactJid);
    const auto database = open(state_.WHATSAPP_DATABASE);
    auto list = readRows<WhatsApp>(database->executeQuery(kMessagesOf, {jid, jid}), fillMessage);
    nameMessages(*database, list);
    return list;
}

Text DAOs::GetWhatsAppContactName(const Text& jid) {
    if (!jid) return "";
    const std::lock_guard lock(lookupMutex_);
    if (!partnerNames_) partnerNames_ = readPartnerNames(*open(state_.WHATSAPP_DATABASE));
    return partnerName(*partnerNames_, jid);
}

std::vector<std::int64_t> DAOs::GetAllWhatsAppRowID() {
    return rowIds(state_.WHATSAPP_DATABASE, kRowIds);
}

}  // namespace salvor
