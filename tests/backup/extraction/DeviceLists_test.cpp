#include "backup/extraction/DeviceLists.h"

#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include "backup/BackupSource.h"
#include "backup/extraction/KeyboardDictionary.h"
#include "backup/extraction/PropertyListReaders.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

Bytes bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A dictionary; a value that is no tag itself is a text.
std::string dict(const std::vector<std::pair<std::string, std::string>>& members) {
    std::string text;
    for (const auto& [key, value] : members) {
        text += "<key>" + key + "</key>";
        text += value.starts_with('<') ? value : "<string>" + value + "</string>";
    }
    return "<dict>" + text + "</dict>";
}

std::string array(const std::string& elements) {
    return "<array>" + elements + "</array>";
}

std::string xml(const std::string& inner) {
    return "<plist version=\"1.0\">" + inner + "</plist>";
}

PropertyList listOf(const std::string& inner) {
    return PropertyList::parse(bytesOf(xml(inner)));
}

/// The fields of each row, an absent one as "-".
template <class Row>
std::vector<std::string> textsOf(const List<Row>& list) {
    std::vector<std::string> texts;
    for (const auto& row : list) {
        std::vector<std::string> fields;
        forEachField(*row, [&](const char*, const auto& value) {
            if constexpr (std::is_integral_v<std::remove_cvref_t<decltype(value)>>)
                fields.push_back(std::to_string(value));
            else
                fields.push_back(value.value_or("-"));
        });
        texts.push_back(fmt::format("{}", fmt::join(fields, " ")));
    }
    return texts;
}

TEST(DeviceListRows, AreTheEntriesWithSomethingToShow) {
    const auto accounts = array(dict({{"Username", "u"},
                                      {"PortNumber", "<integer>993</integer>"},
                                      {"Hostname", "h"},
                                      {"Class", "c"}}) +
                                "<string>no entry</string>" + dict({{"Identifier", "i"}}) +
                                dict({{"PortNumber", "25"}, {"Username", "<data/>"}}));
    EXPECT_THAT(textsOf(accountsOf(listOf(dict({{"Accounts", accounts}})))),
                ElementsAre("1 u 993 c h", "2 - 25 - -"));
    const auto searches = array(dict({{"Query", "q"},
                                      {"Latitude", "<real>-52.25</real>"},
                                      {"Longitude", "13.5"},
                                      {"Location", "l"}}) +
                                dict({{"DisplayQuery", "d"}, {"Latitude", "<real>nan</real>"}}) +
                                dict({{"HistoryItemType", "<integer>1</integer>"}}));
    EXPECT_THAT(textsOf(mapHistoryOf(listOf(dict({{"HistoryItems", searches}})))),
                ElementsAre("1 q l -52.25 13.5", "2 d - - -"));
}

TEST(DeviceListRows, OfApplicationsAreNamedByTheirBundlesWhereverTheyStand) {
    const auto one = dict({{"CFBundleIdentifier", "org.one"},
                           {"CFBundleDisplayName", "One"},
                           {"CFBundleVersion", "1.0"}});
    const auto two = dict({{"CFBundleIdentifier", "org.two"},
                           {"CFBundleShortVersionString", "<real>2.5</real>"},
                           {"Path", "/var/mobile/Applications/X/Two.app"}});
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {dict({{"System", dict({{"a", two}})}, {"User", dict({{"b", one}})}}),
         {"1 One org.one 1.0", "2 Two org.two 2.5"}},
        {dict({{"Applications", array(one + two)}}), {"1 One org.one 1.0", "2 Two org.two 2.5"}},
        {array(two + "<dict/>"), {"1 Two org.two 2.5"}},
        {dict({{"org.one", one}, {"n", "<integer>1</integer>"}}), {"1 One org.one 1.0"}},
        {dict({{"x", dict({{"CFBundleIdentifier", "i"}})}}), {"1 - i -"}},
        {dict({{"x", dict({{"CFBundleIdentifier", "<true/>"}})}}), {}},
    };
    for (const auto& [list, rows] : cases)
        EXPECT_EQ(textsOf(applicationsOf(listOf(list))), rows) << list;
}

TEST(DeviceListRows, OfTheKeyboardAreTheWordsBetweenZeroesAndCounts) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"DynamicDictionary-5\0hello\0world\0"s, {"1 hello", "2 world"}},
        {"DynamicDictionary-4hello\0\x01\x02\x7Fworld"s, {"1 hello", "2 world"}},
        {"DynamicDictionary-5\0gr\xC3\xBC\xC3\x9F\0\xE5\xAD\x97\0two words"s,
         {"1 gr\xC3\xBC\xC3\x9F", "2 \xE5\xAD\x97", "3 two words"}},
        {"DynamicDictionary-5\0a\0\xC3\0\xFF\xFE\xFD\0ok"s, {"1 ok"}},
        {"DynamicDictionary-5\0"s + std::string(255, 'x') + '\0' + std::string(256, 'y'),
         {"1 " + std::string(255, 'x')}},
        {"DynamicDictionary", {}},
        {"DynamicDictionary-5", {}},
        {"", {}},
        {"dynamicdictionary-5\0hello\0"s, {}},
        {"SQLite format 3\0hello\0"s, {}},
    };
    for (const auto& [file, words] : cases)
        EXPECT_EQ(textsOf(keyboardWordsOf(bytesOf(file))), words) << file.substr(0, 40);
}

/// A backup with a row in each of its four lists.
class DeviceListFiles : public testing::Test {
  protected:
    DeviceListFiles() {
        useBackup(state, folder.path());
        state.ACCOUNT_DATABASE = "accounts";
        state.APPLICATIONS_DATABASE = "applications";
        state.MAPHISTORY_DATABASE = "maps";
        state.DYNAMICDIT_DATABASE = "words";
        for (const auto& [file, bytes] : sound) writeWholeFile(folder / file, bytes);
    }

    static std::string bundle(const std::string& identifier) {
        return xml(
            dict({{"Applications", dict({{"a", dict({{"CFBundleIdentifier", identifier}})}})}}));
    }

    std::vector<std::size_t> sizes(const std::stop_token& cancelled = {}) {
        readDeviceLists(state, cancelled);
        return {state.AccountContent.size(), state.ApplicationContent.size(),
                state.MapContent.size(), state.UserDictContent.size()};
    }

    const std::vector<std::pair<const char*, std::string>> sound{
        {"accounts", xml(dict({{"Accounts", array(dict({{"Username", "u"}}))}}))},
        {"applications", bundle("file")},
        {"maps", xml(dict({{"HistoryItems", array(dict({{"Query", "q"}}))}}))},
        {"words", "DynamicDictionary-5\0word\0"s}};
    TempFolder folder;
    ScanState state;
};

TEST_F(DeviceListFiles, CostTheirOwnListOnlyWhenBroken) {
    const std::string bad[] = {
        "",
        "x",
        "bplist00",
        "<plist><dict>",
        "DynamicDictionary-5",
        xml("<string>text</string>"),
        std::string(100'000, '\xFF'),
        xml(dict(
            {{"Accounts", "<true/>"}, {"HistoryItems", "<dict/>"}, {"User", array("<array/>")}}))};
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const auto& [file, bytes] = sound[i];
        std::vector<std::size_t> expected(4, 1);
        expected[i] = 0;
        for (const auto& broken : bad) {
            writeWholeFile(folder / file, broken);
            EXPECT_EQ(sizes(), expected) << file << ": " << broken.substr(0, 60);
        }
        std::filesystem::remove(folder / file);
        EXPECT_EQ(sizes(), expected) << file;
        writeWholeFile(folder / file, bytes);
    }
}

TEST_F(DeviceListFiles, LeaveTheApplicationsToTheManifestWhereNoListNamesThem) {
    writeWholeFile(folder / "Manifest.plist", bundle("manifest"));
    for (const char* source : {"file", "manifest"}) {
        readDeviceLists(state, {});
        EXPECT_EQ(state.ApplicationContent[0]->BundleIdentifer, source);
        std::filesystem::remove(folder / "applications");
    }
}

TEST_F(DeviceListFiles, AreNotReadByACancelledScan) {
    EXPECT_THAT(sizes(), ElementsAre(1, 1, 1, 1));
    clearDeviceLists(state);
    std::stop_source cancel;
    cancel.request_stop();
    EXPECT_THAT(sizes(cancel.get_token()), testing::Each(0));
}

}  // namespace
}  // namespace salvor
