#include "util/PropertyList.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>

#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/PropertyList.h"
#include "util/PropertyListGuard.h"

namespace salvor {
namespace {

using namespace std::string_literals;

PropertyList parse(const std::string& text) {
    return PropertyList::parse({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

PropertyListDictionary sample() {
    PropertyListDictionary inner;
    inner.text("DeviceName", "Inner");
    PropertyListDictionary top;
    top.text("Name", "J\xC3\xBCrgen <&>").text("Empty", "").text("Yes", "yes").text("No", "no");
    top.boolean("True", true).boolean("False", false).integer("Two", 2).integer("Zero", 0);
    top.date("Date", 1'000'000'000).data("Data", "\x01\x00\x02"s).emptyArray("Array");
    top.dictionary("Lockdown", std::move(inner));
    PropertyListDictionary visit;
    visit.text("", "https://a").real("Latitude", -51.5).real("Whole", 2).integer("Minus", ~0ULL);
    std::vector<PropertyListDictionary> visits;
    visits.push_back(std::move(visit));
    visits.emplace_back();
    top.real("Endless", std::numeric_limits<double>::infinity()).array("Visits", std::move(visits));
    return top;
}

std::string written(bool binary) {
    const TempFolder folder;
    const auto file = folder / "a.plist";
    binary ? sample().writeBinary(file) : sample().writeXml(file);
    return readWholeFile(file);
}

TEST(PropertyList, ReadsBothFormsAlike) {
    for (const bool binary : {false, true}) {
        const PropertyList list = parse(written(binary));
        EXPECT_EQ(list.text("Name"), Text("J\xC3\xBCrgen <&>"));
        EXPECT_EQ(list.text("Empty"), Text(""));
        EXPECT_EQ(list.integer("Two"), 2);
        EXPECT_TRUE(list.has("Data"));
        for (const char* key : {"Missing", "Two"}) EXPECT_EQ(list.text(key), std::nullopt) << key;
        for (const char* key : {"Yes", "True", "Two"}) EXPECT_EQ(list.boolean(key), true) << key;
        for (const char* key : {"No", "Empty", "False", "Zero", "Array"}) {
            EXPECT_EQ(list.boolean(key), false) << key;
        }
        EXPECT_EQ(list.boolean("Missing"), std::nullopt);
        EXPECT_EQ(list.integer("Name"), std::nullopt);
        EXPECT_EQ(list.scalar("Name"), list.text("Name"));
        EXPECT_EQ(list.scalar("Two"), Text("2"));
        for (const char* key : {"Data", "Endless"}) EXPECT_EQ(list.scalar(key), std::nullopt);
        EXPECT_EQ(list.dictionary("Lockdown").text("DeviceName"), Text("Inner"));
        EXPECT_FALSE(list.dictionary("Name").has("DeviceName"));

        const auto visits = list.dictionaries("Visits");
        ASSERT_EQ(visits.size(), 2U);
        EXPECT_EQ(visits[0].text(""), Text("https://a")) << "a key may be empty";
        EXPECT_EQ(visits[0].scalar("Latitude"), Text("-51.5"));
        EXPECT_EQ(visits[0].scalar("Whole"), Text("2"));
        EXPECT_EQ(visits[0].integer("Minus"), -1);
        EXPECT_FALSE(visits[1].has(""));
        ASSERT_EQ(list.dictionaries().size(), 1U) << "arrays are none";
        EXPECT_EQ(list.dictionaries()[0].text("DeviceName"), Text("Inner"));
        for (const char* key : {"Array", "Name", "Missing"}) {
            EXPECT_TRUE(list.dictionaries(key).empty()) << key;
        }
    }
    const auto top = parse("<plist><array><dict><key>a</key><true/></dict><true/></array></plist>");
    ASSERT_EQ(top.dictionaries().size(), 1U);
    EXPECT_TRUE(top.dictionaries()[0].has("a"));
    EXPECT_FALSE(top.has("a"));
    EXPECT_TRUE(PropertyList().dictionaries().empty());
}

TEST(PropertyList, ReadsWhatPeopleAndToolsPutAroundTheDictionary) {
    const auto list = parse(
        "\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<!-- <dict> -->\n"
        "<!DOCTYPE plist PUBLIC \"-//X//DTD PLIST 1.0//EN\" \"http://x/y.dtd\">\n"
        "<plist version=\"1.0\"><dict ><key>A</key><!-- </dict> --><string>b</string>\n"
        "<key>C</key><true/><key>D</key><string><![CDATA[</dict><x>]]></string></dict></plist>\n");
    EXPECT_EQ(list.text("A"), Text("b"));
    EXPECT_EQ(list.text("D"), Text("</dict><x>"));
    EXPECT_EQ(list.boolean("C"), true);
}

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

std::string nestedXml(int depth) {
    return "<plist>" + repeated("<dict><key>k</key>", depth) + "<true/>" +
           repeated("</dict>", depth) + "</plist>";
}

std::string bigEndian(std::size_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
    return bytes;
}

// A binary list of these objects, which refer to each other by one byte.
std::string binaryList(const std::vector<std::string>& objects) {
    std::string text = "bplist00";
    std::string table;
    for (const auto& object : objects) {
        table += bigEndian(text.size());
        text += object;
    }
    const auto tableAt = text.size();
    return text + table + std::string(6, '\0') + "\x04\x01" + std::string(4, '\0') +
           bigEndian(objects.size()) + std::string(12, '\0') + bigEndian(tableAt);
}

// An array for each object, the next one referred to `copies` times; the last is "true".
std::string chainedBinary(int objects, int copies) {
    std::vector<std::string> chain{"\xD1\x01\x02"s, "\x51k"s};
    for (int next = 3; next < objects; ++next)
        chain.push_back(static_cast<char>(0xA0 | copies) +
                        repeated({static_cast<char>(next)}, copies));
    chain.push_back("\x09"s);
    return binaryList(chain);
}

TEST(PropertyList, GarbageIsAnEmptyDictionary) {
    std::string cyclic = chainedBinary(5, 1);
    cyclic[cyclic.find('\xA1') + 1] = 2;  // the first array holds itself
    for (const auto& text :
         {""s, "x"s, "<"s, "bplist00"s, "bplist00"s + std::string(40, '\xFF'), "<plist>"s,
          "<plist><array/></plist>"s, "<plist><dict><key>k</key><string>v"s, "<!-- never closed"s,
          "<plist><dict><key>k</key><string><![CDATA[</string></dict></plist>"s,
          "<plist><dict a=\"></dict>\"><key>k</key><true/></dict></plist>"s,
          "<!DOCTYPE p [<!ENTITY e \"e\">]><plist><dict><key>k</key><true/></dict></plist>"s,
          std::string(100'000, '<'), nestedXml(100'000), chainedBinary(200, 1),
          chainedBinary(60, 4), cyclic}) {
        EXPECT_FALSE(parse(text).has("k")) << text.substr(0, 60);
    }
    EXPECT_TRUE(parse(nestedXml(20)).has("k"));
    EXPECT_TRUE(parse(chainedBinary(10, 2)).has("k"));
}

// A dictionary with an array under "k" that refers `copies` times to one text.
std::string sharedText(std::size_t length, std::size_t copies) {
    return binaryList({"\xD1\x01\x02"s, "\x51k"s,
                       "\xAF\x12" + bigEndian(copies) + std::string(copies, '\x03'),
                       "\x5F\x12" + bigEndian(length) + std::string(length, 'a')});
}

std::string xmlOf(const std::string& members) {
    return "<plist><dict><key>k</key><true/>" + members + "</dict></plist>";
}

// What costs the library time or memory out of all proportion to the size of the file.
TEST(PropertyList, RefusesWhatGrowsBeyondItsFile) {
    const auto entities = [](int count) {
        return xmlOf("<key>e</key><string>" + repeated("&amp;", count) + "</string>");
    };
    EXPECT_FALSE(parse(sharedText(30'000, 300)).has("k"));
    EXPECT_TRUE(parse(sharedText(30'000, 250)).has("k"));
    EXPECT_FALSE(parse(entities(1'000'000)).has("k"));
    EXPECT_TRUE(parse(entities(1'000)).has("k"));
    EXPECT_FALSE(parse(xmlOf(repeated("<key>k</key><true/>", 100'000))).has("k"));
    const auto inner = "<key>d</key><dict>" + repeated("<key>a</key><true/>", 200) + "</dict>";
    EXPECT_TRUE(parse(xmlOf(repeated(inner, 200))).has("k")) << "each dictionary counts its own";
}

TEST(PropertyList, MissingFilesAndFoldersAreEmpty) {
    const TempFolder folder;
    EXPECT_FALSE(PropertyList::read(folder / "missing.plist").has("k"));
    EXPECT_FALSE(PropertyList::read(folder.path()).has("k"));
}

// Damaged lists never crash; what they still hold is read or not.
TEST(PropertyList, SurvivesDamageAnywhere) {
    std::mt19937 random(7);
    for (const bool binary : {false, true}) {
        const std::string sound = written(binary);
        for (std::size_t length = 0; length < sound.size(); ++length) {
            const std::string cut(sound, 0, length);
            EXPECT_NE(parse(cut).boolean("Missing"), true);
            for (int i = 0; i < 4; ++i) {
                std::string bent = sound;
                bent[length] = static_cast<char>(random());
                bent[random() % bent.size()] = static_cast<char>(random());
                EXPECT_EQ(parse(bent).boolean("Missing"), std::nullopt);
                for (const auto& visit : parse(bent).dictionaries("Visits")) {
                    EXPECT_EQ(visit.scalar("Missing"), std::nullopt);
                }
            }
        }
    }
}

}  // namespace
}  // namespace salvor
