#include "backup/DeviceLists.h"

#include <gmock/gmock.h>

#include "backup/KeyboardDictionary.h"
#include "backup/PropertyListReaders.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

Bytes bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
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
        auto& text = texts.emplace_back();
        forEachField(*row, [&](const char*, const auto& value) {
            if constexpr (std::is_integral_v<std::remove_cvref_t<decltype(value)>>)
                text += std::to_string(value);
            else
                text += " " + value.value_or("-");
        });
    }
    return texts;
}

TEST(Accounts, AreTheEntriesWithSomethingToShow) {
    EXPECT_THAT(
        textsOf(accountsOf(
            listOf("<dict><key>Accounts</key><array>"
                   "<dict><key>Username</key><string>u</string><key>PortNumber</key>"
                   "<integer>993</integer><key>Hostname</key><string>h</string>"
                   "<key>Class</key><string>c</string></dict>"
                   "<string>no entry</string><dict><key>Identifier</key><string>i</string></dict>"
                   "<dict><key>PortNumber</key><string>25</string><key>Username</key><data/></dict>"
                   "</array></dict>"))),
        ElementsAre("1 u 993 c h", "2 - 25 - -"));
}

TEST(Applications, AreNamedByTheirBundlesWhereverTheyStand) {
    const std::string one =
        "<dict><key>CFBundleIdentifier</key><string>org.one</string><key>CFBundleDisplayName</key>"
        "<string>One</string><key>CFBundleVersion</key><string>1.0</string></dict>";
    const std::string two =
        "<dict><key>CFBundleIdentifier</key><string>org.two</string>"
        "<key>CFBundleShortVersionString</key><real>2.5</real>"
        "<key>Path</key><string>/var/mobile/Applications/X/Two.app</string></dict>";
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"<dict><key>System</key><dict><key>a</key>" + two +
             "</dict><key>User</key><dict>"
             "<key>b</key>" +
             one + "</dict></dict>",
         {"1 One org.one 1.0", "2 Two org.two 2.5"}},
        {"<dict><key>Applications</key><array>" + one + two + "</array></dict>",
         {"1 One org.one 1.0", "2 Two org.two 2.5"}},
        {"<array>" + two + "<dict/></array>", {"1 Two org.two 2.5"}},
        {"<dict><key>org.one</key>" + one + "<key>n</key><integer>1</integer></dict>",
         {"1 One org.one 1.0"}},
        {"<dict><key>x</key><dict><key>CFBundleIdentifier</key><string>i</string></dict></dict>",
         {"1 - i -"}},
        {"<dict><key>x</key><dict><key>CFBundleIdentifier</key><true/></dict></dict>", {}},
    };
    for (const auto& [list, rows] : cases)
        EXPECT_EQ(textsOf(applicationsOf(listOf(list))), rows) << list;
}

TEST(MapHistory, ShowsSearchesWithTheirPlaces) {
    EXPECT_THAT(
        textsOf(mapHistoryOf(listOf(
            "<dict><key>HistoryItems</key><array>"
            "<dict><key>Query</key><string>q</string><key>Latitude</key><real>-52.25</real>"
            "<key>Longitude</key><string>13.5</string><key>Location</key><string>l</string></dict>"
            "<dict><key>DisplayQuery</key><string>d</string><key>Latitude</key><real>nan</real>"
            "</dict><dict><key>HistoryItemType</key><integer>1</integer></dict>"
            "</array></dict>"))),
        ElementsAre("1 q l -52.25 13.5", "2 d - - -"));
}

TEST(KeyboardDictionary, HoldsTheWordsBetweenZeroesAndCounts) {
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

class Lists : public testing::Test {
  protected:
    Lists() {
        state.BACKUP_DIRECTORY = folder.path().string();
        state.ACCOUNT_DATABASE = "accounts";
        state.APPLICATIONS_DATABASE = "applications";
        state.MAPHISTORY_DATABASE = "maps";
        state.DYNAMICDIT_DATABASE = "words";
        writeWholeFile(folder / "accounts", xml("<dict><key>Accounts</key><array><dict>"
                                                "<key>Username</key><string>u</string></dict>"
                                                "</array></dict>"));
        writeWholeFile(folder / "applications", bundle("file"));
        writeWholeFile(folder / "maps", xml("<dict><key>HistoryItems</key><array><dict>"
                                            "<key>Query</key><string>q</string></dict>"
                                            "</array></dict>"));
        writeWholeFile(folder / "words", "DynamicDictionary-5\0word\0"s);
    }

    static std::string bundle(const std::string& identifier) {
        return xml(
            "<dict><key>Applications</key><dict><key>a</key><dict>"
            "<key>CFBundleIdentifier</key><string>" +
            identifier + "</string></dict></dict></dict>");
    }

    std::vector<std::size_t> sizes() const {
        return {state.AccountContent.size(), state.ApplicationContent.size(),
                state.MapContent.size(), state.UserDictContent.size()};
    }

    TempFolder folder;
    ScanState state;
};

TEST_F(Lists, OneBrokenFileCostsItsOwnListOnly) {
    const char* files[] = {"accounts", "applications", "maps", "words"};
    const std::string bad[] = {"",
                               "x",
                               "bplist00",
                               "<plist><dict>",
                               "DynamicDictionary-5",
                               xml("<string>text</string>"),
                               std::string(100'000, '\xFF'),
                               xml("<dict><key>Accounts</key><true/><key>HistoryItems</key><dict/>"
                                   "<key>User</key><array><array/></array></dict>")};
    for (std::size_t file = 0; file < std::size(files); ++file) {
        const auto sound = readWholeFile(folder / files[file]);
        std::vector<std::size_t> expected(4, 1);
        expected[file] = 0;
        for (const auto& bytes : bad) {
            writeWholeFile(folder / files[file], bytes);
            readDeviceLists(state, {});
            EXPECT_EQ(sizes(), expected) << files[file] << ": " << bytes.substr(0, 60);
        }
        std::filesystem::remove(folder / files[file]);
        readDeviceLists(state, {});
        EXPECT_EQ(sizes(), expected) << files[file];
        writeWholeFile(folder / files[file], sound);
    }
}

TEST_F(Lists, TheManifestNamesApplicationsWhereNoListDoes) {
    writeWholeFile(folder / "Manifest.plist", bundle("manifest"));
    readDeviceLists(state, {});
    EXPECT_EQ(state.ApplicationContent[0]->BundleIdentifer, "file");
    std::filesystem::remove(folder / "applications");
    readDeviceLists(state, {});
    EXPECT_EQ(state.ApplicationContent[0]->BundleIdentifer, "manifest");
}

TEST_F(Lists, AreEmptiedAndLeftEmptyByACancelledScan) {
    readDeviceLists(state, {});
    EXPECT_THAT(sizes(), ElementsAre(1, 1, 1, 1));
    clearDeviceLists(state);
    std::stop_source cancel;
    cancel.request_stop();
    readDeviceLists(state, cancel.get_token());
    EXPECT_THAT(sizes(), testing::Each(0));
}

}  // namespace
}  // namespace salvor
