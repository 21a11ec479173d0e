#include <fmt/format.h>

#include "tools/sample/Digest.h"
#include "tools/sample/MessageStore.h"
#include "tools/sample/SampleTable.h"

namespace salvor {
namespace {

constexpr const char* kDomain = "HomeDomain";
constexpr const char* kPath = "Library/AddressBook/AddressBook.sqlitedb";
constexpr const char* kSearch = "ABPersonFullTextSearch_content";
constexpr std::int64_t kNoLanguage = 2147483647;

SampleColumns personColumns(int ios) {
    std::vector<SampleColumn> columns{{"ROWID", "INTEGER PRIMARY KEY AUTOINCREMENT"}};
    for (const char* name : {"First", "Last", "Middle", "FirstPhonetic", "MiddlePhonetic",
                             "LastPhonetic", "Organization", "Department", "Note"})
        columns.push_back({name, "TEXT"});
    columns.push_back({"Kind", "INTEGER", std::int64_t{0}});
    for (const char* name :
         {"Birthday", "JobTitle", "Nickname", "Prefix", "Suffix", "FirstSort", "LastSort"})
        columns.push_back({name, "TEXT"});
    columns.insert(columns.end(), {{"CreationDate", "INTEGER"},
                                   {"ModificationDate", "INTEGER"},
                                   {"CompositeNameFallback", "TEXT"},
                                   {"ExternalIdentifier", "TEXT"},
                                   {"ExternalModificationTag", "TEXT"},
                                   {"ExternalUUID", "TEXT"},
                                   {"StoreID", "INTEGER", std::int64_t{0}},
                                   {"DisplayName", "TEXT"},
                                   {"ExternalRepresentation", "BLOB"},
                                   {"FirstSortSection", "TEXT"},
                                   {"LastSortSection", "TEXT"},
                                   {"FirstSortLanguageIndex", "INTEGER", kNoLanguage},
                                   {"LastSortLanguageIndex", "INTEGER", kNoLanguage},
                                   {"PersonLink", "INTEGER", std::int64_t{-1}},
                                   {"ImageURI", "TEXT"},
                                   {"IsPreferredName", "INTEGER", std::int64_t{1}}});
    if (ios >= 6) {
        columns.push_back({"guid", "TEXT"});
        columns.push_back({"PhonemeData", "TEXT"});
    }
    if (ios >= 8) {
        columns.push_back({"AlternateBirthday", "TEXT"});
        columns.push_back({"MapsData", "TEXT"});
    }
    return SampleColumns(std::move(columns));
}

SampleColumns valueColumns(int ios) {
    std::vector<SampleColumn> columns{{"UID", "INTEGER PRIMARY KEY"},
                                      {"record_id", "INTEGER"},
                                      {"property", "INTEGER"},
                                      {"identifier", "INTEGER", std::int64_t{0}},
                                      {"label", "INTEGER", std::int64_t{1}},
                                      {"value", "TEXT"}};
    if (ios >= 6) columns.push_back({"guid", "TEXT"});
    return SampleColumns(std::move(columns));
}

// The content table of a full-text index; its columns have no types.
SampleColumns searchColumns(int ios) {
    std::vector<SampleColumn> columns{{"docid", "INTEGER PRIMARY KEY"}};
    std::vector<std::string> names{
        "First",        "Last",         "Middle",     "FirstPhonetic", "MiddlePhonetic",
        "LastPhonetic", "Organization", "Department", "Note",          "Birthday",
        "JobTitle",     "Nickname",     "Prefix",     "Suffix",        "DisplayName",
        "Phone",        "Email",        "Address",    "SocialProfile", "URL",
        "RelatedNames", "IM",           "Date"};
    if (ios >= 8) names.push_back("SupplementalCompositeNameTerms");
    for (std::size_t i = 0; i < names.size(); ++i)
        columns.push_back({fmt::format("c{}{}", i, names[i]), ""});
    return SampleColumns(std::move(columns));
}

struct SamplePerson {
    std::string first;
    std::optional<std::string> last;
    std::string phone;
    std::optional<std::string> email;
};

SamplePerson personOf(std::int64_t number) {
    SampleRandom random(static_cast<std::uint64_t>(number) + 4711);
    SamplePerson person;
    person.first = sampleWords(number, 1);
    if (random.chance(60)) person.last = sampleWords(number, 2);
    person.phone = "+4940" + std::to_string(2000000 + number * 53);
    if (random.chance(40)) person.email = fmt::format("p{}@example.com", number);
    return person;
}

/// Writes persons with their values and, where the generation has it, their search row.
class ContactSample {
  public:
    explicit ContactSample(SampleFolder& folder)
        : folder_(folder),
          ios_(folder.device().ios),
          database_(folder.add(kDomain, kPath), sampleLayout(folder)),
          persons_(personColumns(ios_)),
          values_(valueColumns(ios_)),
          search_(searchColumns(ios_)) {}

    void write() {
        database_.execute("CREATE TABLE ABMultiValueLabel (value TEXT)");
        database_.insert("ABMultiValueLabel", {std::string("_$!<Mobile>!$_")});
        persons_.create(database_, "ABPerson");
        values_.create(database_, "ABMultiValue");
        SampleTable table(folder_, database_, "ABPerson", "ROWID");
        const auto makePerson = [&](std::int64_t number) { return person(number); };
        if (ios_ >= 6) {
            search_.create(database_, kSearch);
            SampleTable search(folder_, database_, kSearch, "docid");
            const auto makeSearch = [&](std::int64_t number) { return searchRow(number); };
            table.fill(120, makePerson);
            search.fill(120, makeSearch);
            table.deleteSome([&](std::int64_t rowId) { removeValues(rowId); });
            search.deleteSome();
            search.finish(4, makeSearch);
        } else {
            table.fill(120, makePerson);
            table.deleteSome([&](std::int64_t rowId) { removeValues(rowId); });
        }
        table.finish(4, makePerson);
        database_.close();
    }

  private:
    SampleRecord person(std::int64_t number) {
        const auto person = personOf(number);
        const std::int64_t date = sinceReference(folder_.device().startOfUse) + number * 3600;
        SampleRecord record;
        record.row = persons_.row({{"First", person.first},
                                   {"Last", orNull(person.last)},
                                   {"FirstSort", person.first},
                                   {"LastSort", person.last.value_or(person.first)},
                                   {"CreationDate", date},
                                   {"ModificationDate", date + 60}});
        addValue(number, 3, person.phone);
        if (person.email) addValue(number, 4, *person.email);
        record.truth = truthOf(person);
        record.truth.date = date;
        return record;
    }

    SampleRecord searchRow(std::int64_t number) {
        const auto person = personOf(number);
        const std::string phones = person.phone + " " + person.phone.substr(1) + " ";
        SampleRecord record;
        record.row = search_.row({{"c0First", person.first},
                                  {"c1Last", orNull(person.last)},
                                  {"c15Phone", phones},
                                  {"c16Email", orNull(person.email)}});
        record.truth = truthOf(person);
        record.truth.handle = phones;
        return record;
    }

    TruthRow truthOf(const SamplePerson& person) const {
        TruthRow truth;
        truth.database = sampleStoredName(kDomain, kPath);
        truth.text = person.first;
        truth.handle = person.phone;
        truth.values["last"] = orNull(person.last);
        truth.values["email"] = orNull(person.email);
        return truth;
    }

    void addValue(std::int64_t person, std::int64_t property, const std::string& value) {
        std::map<std::string, SqliteValue> row{
            {"record_id", person}, {"property", property}, {"value", value}};
        if (values_.has("guid")) row["guid"] = folder_.random().uuid() + ":ABMultiValue";
        database_.insert("ABMultiValue", values_.row(row));
    }

    void removeValues(std::int64_t person) {
        database_.execute("DELETE FROM ABMultiValue WHERE record_id=?", {person});
    }

    SampleFolder& folder_;
    int ios_;
    SqliteFile database_;
    SampleColumns persons_;
    SampleColumns values_;
    SampleColumns search_;
};

}  // namespace

void writeSampleContacts(SampleFolder& folder) {
    ContactSample(folder).write();
}

}  // namespace salvor
