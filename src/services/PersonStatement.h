#pragma once

namespace salvor {

/// The address-book person statement. Kept: statement-texts.
inline constexpr const char* kPersonStatement =
    "SELECT ROWID, First, Last, Middle, FirstPhonetic, MiddlePhonetic, LastPhonetic, "
    "Organization, Department, Note, Kind, Birthday, JobTitle, Nickname, Prefix, Suffix, "
    "FirstSort, LastSort, LastSort, datetime(CreationDate + 978307200, 'unixepoch', 'localtime') "
    "AS DateTimeCreationDate, datetime(ModificationDate + 978307200, 'unixepoch', 'localtime') AS "
    "DateTimeModificationDate, CompositeNameFallback, ExternalIdentifier, "
    "ExternalModificationTag, ExternalUUID, StoreID, DisplayName, ExternalRepresentation, "
    "FirstSortSection, LastSortSection, FirstSortLanguageIndex, LastSortLanguageIndex, "
    "PersonLink, ImageURI, IsPreferredName FROM ABPerson";

}  // namespace salvor
