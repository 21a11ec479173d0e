#pragma once

#include "scan/StoredNames.h"
#include "services/abstractServices.h"
#include "tests/support/ScanFixture.h"
#include "tests/support/Signatures.h"
#include "tests/support/Told.h"

namespace salvor {

inline constexpr auto kPersonColumns =
    "(ROWID INTEGER PRIMARY KEY, First, Last, Middle, FirstPhonetic, MiddlePhonetic, LastPhonetic, "
    "Organization, Department, Note, Kind, Birthday, JobTitle, Nickname, Prefix, Suffix, "
    "FirstSort, LastSort, CreationDate, ModificationDate, CompositeNameFallback, "
    "ExternalIdentifier, ExternalModificationTag, ExternalUUID, StoreID, DisplayName, "
    "ExternalRepresentation, FirstSortSection, LastSortSection, FirstSortLanguageIndex, "
    "LastSortLanguageIndex, PersonLink, ImageURI, IsPreferredName)";

/// A table, and rows in it if any are given.
inline std::string table(const std::string& name, const std::string& columns,
                         const std::string& rows = "") {
    return "CREATE TABLE " + name + columns + ";" +
           (rows.empty() ? "" : "INSERT INTO " + name + " VALUES" + rows + ";");
}

/// The databases of one category, scanned with the shipped signatures.
class CategoryFixture : public ScanFixture {
  protected:
    CategoryFixture() {
        state.recoverySignatures = shippedSignatures();
        device.iOSMajorVersion = 7;
    }

    DeviceInfo device;
};

/// The records of a service as what they are.
template <class Record>
std::vector<const Record*> recordsOf(const abstractServices& service) {
    std::vector<const Record*> records;
    for (const auto& record : service.model())
        records.push_back(dynamic_cast<const Record*>(record.get()));
    return records;
}

}  // namespace salvor
