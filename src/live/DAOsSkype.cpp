#include "live/DAOs.h"
#include "live/RowReading.h"
#include "scan/StoredNames.h"

namespace salvor {
namespace {

constexpr auto kContacts =
    "SELECT id,fullname,skypename FROM Contacts WHERE fullname<>'' AND  isblocked is null ORDER BY "
    "fullname";
constexpr auto kDialogs =
    "SELECT contacts.id,fullname,author as skypename, datetime(timestamp,'unixepoch') time, "
    "body_xml FROM messages INNER JOIN Contacts ON skypename = author WHERE body_xml is not null "
    "AND dialog_partner = ? ORDER BY timestamp";

void fillPartner(const ResultSet& row, Skype& skype) {
    skype.skypeID = row.intForColumn("id");
    skype.displayName = row.stringForColumn("fullname");
    skype.skypeName = row.stringForColumn("skypename");
}

}  // namespace

List<Skype> DAOs::getSkypeContacts() {
    return readRows<Skype>(open(storedNameOf(Stored::Skype))->executeQuery(kContacts), fillPartner);
}

List<Skype> DAOs::getDialogsPartner(const Text& skypeName) {
    if (!skypeName) return {};
    const std::string name(*skypeName);
    return readRows<Skype>(open(storedNameOf(Stored::Skype))->executeQuery(kDialogs, {name}),
                           [](const ResultSet& row, Skype& skype) {
                               fillPartner(row, skype);
                               skype.time = row.stringForColumn("time");
                               skype.body = row.stringForColumn("body_xml");
                           });
}

}  // namespace salvor
