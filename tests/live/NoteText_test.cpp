#include "live/NoteText.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <zlib.h>

#include "sql/FMDBUtils.h"
#include "sql/SqlFormat.h"
#include "tests/support/RealData.h"

namespace salvor {
namespace {

using namespace std::string_literals;

std::string field(int number, const std::string& bytes) {
    return std::string(1, static_cast<char>(number << 3 | 2)) +
           static_cast<char>(bytes.size() & 0x7F) + bytes;
}

std::string packed(std::string data) {
    z_stream stream{};
    deflateInit2(&stream, 1, Z_DEFLATED, 31, 9, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, data.size()) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(data.data());
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

const std::string kDocument = "\x08\x01"s + field(2, "\x0D\x01\x02\x03\x04\x11"s + "12345678" +
                                                         field(3, field(5, "x") + field(2, "Hi")));

TEST(NoteText, IsReadFromTheNestedMessages) {
    EXPECT_EQ(noteTextOfDocument(kDocument), "Hi");
    EXPECT_EQ(noteTextOfStoredData(packed(kDocument)), "Hi");
}

TEST(NoteText, DamageGivesNothing) {
    for (std::size_t size = 0; size < kDocument.size(); ++size) {
        EXPECT_EQ(noteTextOfDocument(kDocument.substr(0, size)), std::nullopt) << size;
    }
    const std::string whole = packed(kDocument);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_EQ(noteTextOfStoredData(whole.substr(0, size)), std::nullopt) << size;
    }
    const std::string cases[] = {
        kDocument,                                           // not packed
        packed(field(2, field(3, field(2, "\xFF")))),        // no UTF-8
        packed("\x12\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F"),  // a length beyond everything
        packed(std::string(12, '\xFF')),                     // a varint that does not end
        packed("\x13"),                                      // a wire type that does not exist
        packed(std::string(std::size_t{65} << 20, '\0')),
    };
    for (const auto& data : cases) EXPECT_EQ(noteTextOfStoredData(data), std::nullopt);
}

TEST(NoteText, HtmlLosesItsTags) {
    const std::pair<const char*, const char*> cases[] = {
        {"Title<div>one&nbsp;two</div><div><br></div>", "Titleone two"},
        {"a < b", "a < b"},
        {"a<b", "a<b"},
        {"&nbsp &amp;", "&nbsp &amp;"},
        {"<<a>>", ">"},
        {"", ""}};
    for (const auto& [html, text] : cases) EXPECT_EQ(plainTextOfHtml(html), text);
    // Half an hour when every "<" looks for its ">".
    const std::string open(std::size_t{8} << 20, '<');
    EXPECT_EQ(plainTextOfHtml("<b>" + open), open);
}

TEST(NoteText, ReadsRealBodies) {
    if (realData().empty()) GTEST_SKIP() << kNoRealData;
    const auto read = [](const char* name) {
        std::ifstream file(realData() / "note-bodies" / name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    const auto simple = noteTextOfStoredData(read("simple_note_protobuf_gzipped.bin"));
    ASSERT_TRUE(simple.has_value());
    EXPECT_FALSE(simple->empty());
    EXPECT_EQ(noteTextOfDocument(read("simple_note_protobuf.bin")), simple);
    for (const char* name : {"block_quotes_gzipped.bin", "emoji_formatting_2_gzipped.bin"}) {
        EXPECT_TRUE(noteTextOfStoredData(read(name)).has_value()) << name;
    }
}

TEST(NoteText, ReadsARealStoreAndLeavesLockedNotes) {
    if (realData().empty()) GTEST_SKIP() << kNoRealData;
    const auto store = realData() / "ios15-notes" / "NoteStore.sqlite";
    FMDBUtils database(store.string(), SourcePolicy::Protected);
    ASSERT_TRUE(database.openDatabase());
    auto rows = database.executeQuery(
        "SELECT ZDATA, ZTITLE1, ZISPASSWORDPROTECTED AS locked FROM ZICNOTEDATA d INNER JOIN "
        "ZICCLOUDSYNCINGOBJECT o ON o.ZNOTEDATA = d.Z_PK");
    int open = 0;
    int locked = 0;
    while (rows.next()) {
        const auto text = noteTextOfStoredData(rows.dataForColumn("ZDATA").value_or(""));
        EXPECT_EQ(text.has_value(), !rows.boolForColumn("locked"));
        text ? ++open : ++locked;
        const auto title = rows.stringForColumn("ZTITLE1").value_or("");
        EXPECT_TRUE(!text || text->starts_with(title)) << title;
    }
    EXPECT_EQ(open, 4);
    EXPECT_EQ(locked, 4);
}

TEST(SqlFormat, SplicesWithoutQuoting) {
    EXPECT_EQ(formatSql("a='%@' b=%d c=%ld d=%lld e=%@ f=%@ g=%@ %% %x %",
                        {Text("it's %@"), std::int64_t{4294967298}, std::int64_t{-5}, 7.9,
                         Text(std::nullopt), 398000000.0, 0.1}),
              "a='it's %@' b=2 c=-5 d=7 e=(null) f=398000000 g=0.1 % %x %");
    EXPECT_EQ(formatSql("x %@", {}), "x %@");
}

}  // namespace
}  // namespace salvor
