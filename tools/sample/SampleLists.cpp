#include "tools/sample/Digest.h"
#include "tools/sample/PropertyList.h"
#include "tools/sample/SampleTable.h"

namespace salvor {
namespace {

constexpr const char* kHome = "HomeDomain";
constexpr const char* kInstalledApplications = "2436e9cd7b9697b418523c55ac469fea02116cc5";

void tell(SampleFolder& folder, const std::string& storedName, const char* list,
          const std::string& text, const std::string& rest = "") {
    TruthRow row;
    row.database = storedName;
    row.table = list;
    row.text = text;
    row.handle = rest;
    folder.truth().live.push_back(std::move(row));
}

void writeAccounts(SampleFolder& folder) {
    constexpr const char* kPath = "Library/Preferences/com.apple.accountsettings.plist";
    const auto name = sampleStoredName(kHome, kPath);
    std::vector<PropertyListDictionary> accounts;
    accounts.emplace_back().text("Class", "LocalAccount").text("Username", "on my phone");
    tell(folder, name, "Accounts", "on my phone", "LocalAccount||");
    for (std::int64_t number = 1; number <= 3; ++number) {
        const auto user = "user" + std::to_string(number) + "@example.org";
        accounts.emplace_back()
            .text("Class", "IMAPAccount")
            .text("Hostname", "mail.example.org")
            .integer("PortNumber", 993)
            .boolean("SSLEnabled", true)
            .text("Username", user);
        tell(folder, name, "Accounts", user, "IMAPAccount|mail.example.org|993");
    }
    accounts.emplace_back().text("DisplayName", "an entry of another kind");
    PropertyListDictionary settings;
    settings.array("Accounts", std::move(accounts)).integer("AccountsVersion", 2);
    settings.writeBinary(folder.add(kHome, kPath));
}

void writeApplications(SampleFolder& folder) {
    PropertyListDictionary groups[2];
    for (std::int64_t number = 1; number <= 6; ++number) {
        const auto identifier = "org.example.app" + std::to_string(number);
        const auto name = sampleWords(number, 1);
        PropertyListDictionary application;
        application.text("CFBundleIdentifier", identifier)
            .text("CFBundleDisplayName", name)
            .text("CFBundleVersion", "1." + std::to_string(number));
        groups[number % 2].dictionary(identifier, std::move(application));
        tell(folder, kInstalledApplications, "Applications", name,
             identifier + "|1." + std::to_string(number));
    }
    PropertyListDictionary installed;
    installed.dictionary("User", std::move(groups[0])).dictionary("System", std::move(groups[1]));
    installed.writeXml(folder.addUnlisted(kInstalledApplications));
}

void writeMapHistory(SampleFolder& folder) {
    constexpr const char* kPath = "Library/Maps/History.plist";
    std::vector<PropertyListDictionary> items;
    for (std::int64_t number = 1; number <= 5; ++number) {
        const auto query = sampleWords(number, 2);
        items.emplace_back()
            .integer("HistoryItemType", 0)
            .text("Query", query)
            .text("Location", "Town " + std::to_string(number))
            .real("Latitude", -10.5 * static_cast<double>(number))
            .real("Longitude", 20.25)
            .integer("ZoomLevel", 14);
        tell(folder, sampleStoredName(kHome, kPath), "HistoryItems", query,
             "Town " + std::to_string(number));
    }
    items.emplace_back().integer("HistoryItemType", 1);
    PropertyListDictionary history;
    history.array("HistoryItems", std::move(items)).writeBinary(folder.add(kHome, kPath));
}

void writeKeyboardDictionary(SampleFolder& folder) {
    const bool older = folder.device().ios < 5;
    const char* path =
        older ? "Library/Keyboard/en_GB-dynamic-text.dat" : "Library/Keyboard/dynamic-text.dat";
    std::string bytes = older ? "DynamicDictionary-4" : "DynamicDictionary-5";
    for (std::int64_t number = 1; number <= 40; ++number) {
        auto word = sampleWords(number, 1);
        word = word.substr(0, word.find(' '));
        bytes += std::string(3, '\0') + static_cast<char>(number % 30) + word;
        tell(folder, sampleStoredName(kHome, path), "words", word);
    }
    writeWholeFile(folder.add(kHome, path), bytes + '\0');
}

}  // namespace

void writeSampleLists(SampleFolder& folder) {
    writeAccounts(folder);
    writeApplications(folder);
    writeMapHistory(folder);
    writeKeyboardDictionary(folder);
}

}  // namespace salvor
