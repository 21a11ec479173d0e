#include "live/PersonColumns.h"

namespace salvor {
namespace {

struct TextColumn {
    const char* name;
    Text Contact::*member;
};

constexpr TextColumn kTextColumns[] = {
    {"First", &Contact::FirstName},
    {"Last", &Contact::LastName},
    {"Middle", &Contact::MiddleName},
    {"FirstPhonetic", &Contact::FirstPhonetic},
    {"MiddlePhonetic", &Contact::MiddlePhonetic},
    {"LastPhonetic", &Contact::LastPhonetic},
    {"Organization", &Contact::Organization},
    {"Department", &Contact::Department},
    {"Note", &Contact::Note},
    {"Birthday", &Contact::Birthday},
    {"JobTitle", &Contact::JobTitle},
    {"Nickname", &Contact::Nickname},
    {"Prefix", &Contact::Prefix},
    {"Suffix", &Contact::Suffix},
    {"DisplayName", &Contact::DisplayName},
    {"ExternalIdentifier", &Contact::ExternalIdentifier},
    {"ExternalModificationTag", &Contact::ExternalModificationTag},
    {"ExternalUUID", &Contact::ExternalUUID},
    {"ImageURI", &Contact::ImageUri},
};

}  // namespace

void fillPersonTexts(const ResultSet& row, Contact& contact) {
    contact.RowId = row.longLongIntForColumn("ROWID");
    for (const auto& [name, member] : kTextColumns) contact.*member = row.stringForColumn(name);
}

}  // namespace salvor
