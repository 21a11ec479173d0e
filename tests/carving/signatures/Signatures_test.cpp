#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "carving/search/CompiledPattern.h"
#include "carving/signatures/SignatureListing.h"
#include "tests/carving/CarvingFixture.h"

namespace salvor::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// The signatures of a file with this text; `fault` is what loading said.
SqLiteTableSignatures load(const std::string& xml, std::string* fault = nullptr) {
    const TemporaryFile file(bytesOf(xml));
    SqLiteTableSignatures signatures;
    const std::string said = signatures.loadSignatures(file.path());
    if (fault != nullptr) *fault = said;
    return signatures;
}

std::shared_ptr<const TablePattern> loadPattern(const std::string& inner) {
    const auto signatures =
        load("<signatures><signature name=\"D\" database=\"B\" table=\"T\"><pattern>" + inner +
             "</pattern></signature></signatures>");
    const auto signature = signatures.Find("D", "B", "T");
    if (!signature || signature->TablePatterns.size() != 1) throw std::runtime_error("no pattern");
    return signature->TablePatterns.front();
}

TEST(SignaturesTest, SplitsVersions) {
    const struct {
        const char* element;
        std::vector<std::string> versions;
    } cases[] = {
        {R"(<version value="iOS5"/>)", {"iOS5"}},
        {R"(<version value="iOS56"/>)", {"iOS5", "iOS6", "iOS56"}},
        {R"(<version value="iOS456"/><version value="iOS9"/>)",
         {"iOS4", "iOS5", "iOS6", "iOS456", "iOS9"}},
        {R"(<version value="iOS"/>)", {"iOS"}},
        {R"(<version value="IOS56"/>)", {"IOS56"}},
        {"<version/>", {""}},
        {R"(<version value="iOS56"><header>[0]</header></version>)", {""}},
        {"", {}},
    };
    for (const auto& [element, versions] : cases) {
        const auto pattern = loadPattern(element);
        EXPECT_EQ(pattern->SupportedVersions, versions) << element;
        EXPECT_FALSE(pattern->CheckIfVersionSupported("iOS7"));
    }
}

TEST(SignaturesTest, TrimsSpacesOnly) {
    EXPECT_EQ(loadPattern("<header>  [1]; [0] </header>")->headerPattern, "[1]; [0]");
    EXPECT_EQ(loadPattern("<header>\n [0] \t </header>")->headerPattern, "\n [0] \t");
    EXPECT_EQ(loadPattern("<header>[5]<x/>;[0]</header>")->headerPattern, ";[0]");
    EXPECT_EQ(loadPattern("<columns> a, b </columns>")->columns, "a, b");
    EXPECT_TRUE(loadPattern("<header/>")->hasHeader);
    EXPECT_FALSE(loadPattern("<columns>a</columns>")->hasHeader);
}

TEST(SignaturesTest, DecodesHeaderTexts) {
    const struct {
        const char* text;
        HeaderPattern codes;
    } cases[] = {
        {"[1];[0];[-1];[1,2,3,4];[-2]", {{1}, {0}, {-1}, {1, 2, 3, 4}, {-2}}},
        {"", {{0}}},
        {"[0];", {{0}, {0}}},
        {"[ \n7x,x7,+8,-20,- 3]", {{7, 0, 8, -20, 0}}},
        {"[[1]2],]", {{12, 0}}},
        {"[99999999999999999999,-99999999999]", {{INT32_MAX, INT32_MIN}}},
    };
    for (const auto& [text, codes] : cases) EXPECT_EQ(makePattern(text)->Header(), codes) << text;
}

TEST(SignaturesTest, CodesAcceptTheirClasses) {
    const struct {
        std::vector<std::int32_t> codes;
        std::vector<std::int64_t> accepted;
        std::vector<std::int64_t> rejected;
    } cases[] = {
        {{-1}, {12, 13, 127, 128, INT64_MAX}, {0, 11, -1, INT64_MIN}},
        {{-2}, {13, 14, 5000}, {12, 0, -5}},
        {{-20}, {21, 1000}, {20, 12, 0}},
        {{-3}, {4, 9, 128}, {3, 0}},
        {{-300}, {301}, {300, 128, 127, 5}},
        {{-127}, {128}, {127}},
        {{1, 2, 3, 4, 5, 6}, {1, 4, 6}, {0, 7, 8, 9, 13}},
        {{300, 127}, {300, 127}, {299, 126, 301, -300}},
        {{INT32_MIN}, {std::int64_t{1} << 40}, {INT32_MAX, 13}},
        {{}, {}, {0, 12}},
    };
    for (const auto& [codes, accepted, rejected] : cases) {
        const ColumnCodes column(codes);
        for (const std::int64_t type : accepted) EXPECT_TRUE(column.accepts(type)) << type;
        for (const std::int64_t type : rejected) EXPECT_FALSE(column.accepts(type)) << type;
    }
}

TEST(SignaturesTest, BrokenFilesLeaveWhatWasComplete) {
    const std::string good = "<signatures><signature name=\"D\" database=\"B\" table=\"T\"/>";
    const struct {
        const char* what;
        std::string xml;
        std::size_t signatures;
    } cases[] = {
        {"cut off", good + "<signature name=\"E\"", 1},
        {"wrong nesting", good + "<signature name=\"E\"></signatures>", 1},
        {"unknown entity", good + "<signature name=\"&e;\"/></signatures>", 1},
        {"own entity",
         "<!DOCTYPE s [<!ENTITY e \"x\">]>" + good + "<signature name=\"&e;\"/></signatures>", 1},
        {"external entity",
         "<!DOCTYPE s SYSTEM \"file:///etc/passwd\" [<!ENTITY % p SYSTEM \"file:///etc/passwd\">"
         "%p;]>" +
             good + "</signatures>",
         1},
        {"nothing", "", 0},
        {"no XML", "SQLite format 3", 0},
    };
    for (const auto& [what, xml, count] : cases) {
        std::string fault;
        const auto signatures = load(xml, &fault);
        EXPECT_EQ(signatures.tableSignatures.size(), count) << what;
        EXPECT_TRUE(signatures.loaded);
        EXPECT_EQ(fault.empty(), std::string(what) == "external entity") << what << fault;
    }
    SqLiteTableSignatures missing;
    EXPECT_NE(missing.loadSignatures("/nowhere/at-all.xml"), "");
    EXPECT_TRUE(missing.loaded);
}

TEST(SignaturesTest, DecodesTheReferencesOfXml) {
    const auto pattern = loadPattern(
        "<header>&#91;5]<![CDATA[;[6]]]></header><attributemapping name='a&amp;&lt;&#98;' "
        "column='+3'/><attributemapping name='c' column='-+3'/>");
    EXPECT_EQ(pattern->headerPattern, "[5];[6]");
    EXPECT_EQ(pattern->AttributesMapping[0].Name, "a&<b");
    EXPECT_EQ(pattern->AttributesMapping[0].Column, 3);
    EXPECT_EQ(pattern->AttributesMapping[1].Column, 0);
}

TEST(SignaturesTest, AMappingWithoutANameMapsNothing) {
    const auto pattern = loadPattern(
        "<header>[1];[0];[0];[7]</header><attributemapping column='3'/>"
        "<attributemapping name='' column='3'/><attributemapping name='date' column='3'/>");
    ASSERT_EQ(pattern->AttributesMapping.size(), 1u);
    EXPECT_EQ(pattern->mappingForColumn(3)->Name, "date");
}

TEST(SignaturesTest, LoadingDiscardsWhatWasThere) {
    const TemporaryFile file(bytesOf("<signatures/>"));
    SqLiteTableSignatures signatures;
    signatures.tableSignatures.push_back(std::make_shared<SQLiteSignature>());
    EXPECT_EQ(signatures.loadSignatures(file.path()), kNoSignatures);
    EXPECT_THAT(signatures.tableSignatures, IsEmpty());
}

TEST(SignatureListingTest, NamesOdditiesWithTheirLines) {
    const TemporaryFile file(
        bytesOf("<signatures>\n"
                "<signature name='D' database='B' table='T'>\n"
                "<pattern><version value='iOS67'/><version value='iOS6'/>\n"
                "<header>[1];[0];[0];[a]</header>\n"
                "<attributemapping name='x' column='4'/>\n"
                "<attributemapping name='y' column='2b'/><attributemapping column='2'/></pattern>\n"
                "<pattern><columns>a</columns></pattern></signature>\n"
                "<signature name='D' database='B' table='T'/>\n"
                "<signature name='D' database='B'/><other/></signatures>\n"));
    const auto listing = SignatureListing::read(file.path());
    EXPECT_TRUE(listing.readable);
    EXPECT_EQ(listing.fault, "");
    ASSERT_EQ(listing.signatures.size(), 3u);
    EXPECT_EQ(listing.signatures[0].patterns, 2u);
    EXPECT_THAT(listing.signatures[0].versions, ElementsAre("iOS6", "iOS7", "iOS67"));
    const struct {
        long line;
        const char* text;
    } expected[] = {
        {4, "no part of a code: \"a\""},
        {3, "\"x\" is mapped to column 4"},
        {6, "column \"2b\" is not"},
        {6, "without a name maps nothing"},
        {7, "names no version"},
        {7, "has no header"},
        {8, "there already"},
        {9, "no attribute \"table\""},
        {9, "unknown element \"other\""},
    };
    EXPECT_EQ(listing.oddities.size(), std::size(expected));
    for (const auto& [line, text] : expected) {
        EXPECT_THAT(listing.oddities,
                    Contains(AllOf(Field(&SignatureOddity::line, line),
                                   Field(&SignatureOddity::text, HasSubstr(text)))));
    }
    EXPECT_FALSE(SignatureListing::read("/nowhere/at-all.xml").readable);
}

}  // namespace
}  // namespace salvor::testing
