#include <zlib.h>

#include "tools/sample/Digest.h"
#include "tools/sample/MessageStore.h"
#include "tools/sample/SampleTable.h"

namespace salvor {
namespace {

constexpr const char* kDomain = "AppDomainGroup-group.com.apple.notes";
constexpr const char* kPath = "NoteStore.sqlite";
constexpr const char* kObjectColumns =
    "Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, ZCRYPTOITERATIONCOUNT "
    "INTEGER, ZISPASSWORDPROTECTED INTEGER, ZMARKEDFORDELETION INTEGER, "
    "ZNEEDSINITIALFETCHFROMCLOUD INTEGER, ZNEEDSTOBEFETCHEDFROMCLOUD INTEGER, ZCLOUDSTATE "
    "INTEGER, ZCHECKEDFORLOCATION INTEGER, ZFILESIZE INTEGER, ZORIENTATION INTEGER, "
    "ZSECTION INTEGER, ZLOCATION INTEGER, ZMEDIA INTEGER, ZNOTE INTEGER, "
    "ZSCALEWHENDRAWING INTEGER, ZVERSION INTEGER, ZVERSIONOUTOFDATE INTEGER, ZSTATE "
    "INTEGER, ZACCOUNT INTEGER, ZTYPE INTEGER, ZACCOUNT1 INTEGER, ZATTACHMENTVIEWTYPE "
    "INTEGER, ZINTEGERID INTEGER, ZLEGACYNOTEINTEGERID INTEGER, ZLEGACYNOTEWASPLAINTEXT "
    "INTEGER, ZNOTEHASCHANGES INTEGER, ZTYPE1 INTEGER, ZACCOUNT2 INTEGER, ZGROUP INTEGER, "
    "ZNOTEDATA INTEGER, ZISHIDDENNOTECONTAINER INTEGER, ZSORTORDER INTEGER, ZOWNER "
    "INTEGER, ZACCOUNTTYPE INTEGER, ZDIDCHOOSETOMIGRATE INTEGER, ZDIDFINISHMIGRATION "
    "INTEGER, ZDIDMIGRATEONMAC INTEGER, ZFOLDERTYPE INTEGER, ZIMPORTEDFROMLEGACY INTEGER, "
    "ZACCOUNT3 INTEGER, ZPARENT INTEGER, ZDURATION FLOAT, ZMODIFICATIONDATE TIMESTAMP, "
    "ZORIGINX FLOAT, ZORIGINY FLOAT, ZPREVIEWUPDATEDATE TIMESTAMP, ZSIZEHEIGHT FLOAT, "
    "ZSIZEWIDTH FLOAT, ZHEIGHT FLOAT, ZMODIFIEDDATE TIMESTAMP, ZSCALE FLOAT, ZWIDTH "
    "FLOAT, ZSTATEMODIFICATIONDATE TIMESTAMP, ZMODIFICATIONDATEATIMPORT TIMESTAMP, "
    "ZCREATIONDATE TIMESTAMP, ZFOLDERSMODIFICATIONDATE TIMESTAMP, "
    "ZLEGACYMODIFICATIONDATEATIMPORT TIMESTAMP, ZMODIFICATIONDATE1 TIMESTAMP, "
    "ZDATEFORLASTTITLEMODIFICATION TIMESTAMP, ZPARENTMODIFICATIONDATE TIMESTAMP, "
    "ZIDENTIFIER VARCHAR, ZPASSWORDHINT VARCHAR, ZSUMMARY VARCHAR, ZTITLE VARCHAR, "
    "ZTYPEUTI VARCHAR, ZURLSTRING VARCHAR, ZDEVICEIDENTIFIER VARCHAR, "
    "ZCONTENTHASHATIMPORT VARCHAR, ZFILENAME VARCHAR, ZLEGACYCONTENTHASHATIMPORT VARCHAR, "
    "ZLEGACYIMPORTDEVICEIDENTIFIER VARCHAR, ZLEGACYMANAGEDOBJECTIDURIREPRESENTATION "
    "VARCHAR, ZSNIPPET VARCHAR, ZTHUMBNAILATTACHMENTIDENTIFIER VARCHAR, ZTITLE1 VARCHAR, "
    "ZACCOUNTNAMEFORACCOUNTLISTSORTING VARCHAR, ZNESTEDTITLEFORSORTING VARCHAR, ZNAME "
    "VARCHAR, ZUSERRECORDNAME VARCHAR, ZTITLE2 VARCHAR, ZSERVERRECORD BLOB, "
    "ZREMOTEFILEURL BLOB, ZASSETCRYPTOINITIALIZATIONVECTOR BLOB, ZASSETCRYPTOTAG BLOB, "
    "ZCRYPTOINITIALIZATIONVECTOR BLOB, ZCRYPTOSALT BLOB, ZCRYPTOTAG BLOB, "
    "ZCRYPTOWRAPPEDKEY BLOB, ZENCRYPTEDVALUESJSON BLOB, ZUNAPPLIEDENCRYPTEDRECORD BLOB, "
    "ZMERGEABLEDATA BLOB, ZCRYPTOMETADATAINITIALIZATIONVECTOR BLOB, ZCRYPTOMETADATATAG "
    "BLOB, ZENCRYPTEDMETADATA BLOB, ZMETADATA BLOB, ZCRYPTOVERIFIER BLOB";
constexpr std::int64_t kFolder = 12, kNote = 9;  // entity numbers
constexpr std::int64_t kNotesFolder = 2;
constexpr std::int64_t kFirstNote = 10;  // notes and their folders share a table

/// A length-delimited protocol-buffer field.
std::string field(unsigned number, const std::string& bytes) {
    std::string out(1, static_cast<char>(number << 3U | 2U));
    auto length = bytes.size();
    for (; length >= 0x80; length >>= 7U) out += static_cast<char>(length | 0x80U);
    return out + static_cast<char>(length) + bytes;
}

/// A note's body as it is stored: the document's text and a formatting run over all of it, packed.
std::string storedBody(const std::string& text) {
    std::string document = "\x08";
    document += std::string(1, '\0') +
                field(2, std::string("\x08\0\x10\0", 4) +
                             field(3, field(2, text) + field(5, std::string("\x08\x01", 2))));
    z_stream stream{};
    deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, document.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(document.data());
    stream.avail_in = static_cast<uInt>(document.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

void writeFolders(SqliteFile& database, SampleRandom& random) {
    const auto folder = [&](std::int64_t key, const char* title, std::int64_t type) {
        database.execute(
            "INSERT INTO ZICCLOUDSYNCINGOBJECT (Z_PK, Z_ENT, Z_OPT, ZFOLDERTYPE, ZIDENTIFIER, "
            "ZTITLE2) VALUES (?, ?, 1, ?, ?, ?)",
            {key, kFolder, type, random.uuid(), std::string(title)});
    };
    folder(kNotesFolder, "Notes", 0);
    folder(kNotesFolder + 1, "Recently Deleted", 1);
}

SampleRecord note(SampleFolder& folder, SqliteFile& database, std::int64_t number) {
    const std::int64_t date = sinceReference(folder.device().startOfUse) + number * 7000;
    const std::int64_t object = kFirstNote + number;
    const std::string title = sampleWords(number + 20000, 3);
    const std::string text = title + "\n" + sampleWords(number + 30000, 40);
    database.execute(
        "INSERT INTO ZICCLOUDSYNCINGOBJECT (Z_PK, Z_ENT, Z_OPT, ZMARKEDFORDELETION, ZNOTEDATA, "
        "ZCREATIONDATE, ZMODIFICATIONDATE1, ZIDENTIFIER, ZSNIPPET, ZTITLE1) VALUES (?, ?, 1, 0, ?, "
        "?, ?, ?, ?, ?)",
        {object, kNote, number, static_cast<double>(date) + 0.5, static_cast<double>(date) + 60.5,
         folder.random().uuid(), sampleWords(number + 30000, 5), title});
    database.execute("INSERT INTO Z_12NOTES VALUES (?, ?)", {kNotesFolder, object});
    SampleRecord record;
    record.row = {number, std::int64_t{7}, std::int64_t{1}, object, SqliteBlob{storedBody(text)}};
    record.truth.database = sampleStoredName(kDomain, kPath);
    record.truth.text = title;
    record.truth.handle = text;
    record.truth.date = date;
    return record;
}

}  // namespace

void writeSampleNoteStore(SampleFolder& folder) {
    if (folder.device().ios < 9) return;
    SqliteFile database(folder.add(kDomain, kPath), sampleLayout(folder));
    database.execute("CREATE TABLE ZICCLOUDSYNCINGOBJECT (" + std::string(kObjectColumns) + ")");
    database.execute(
        "CREATE TABLE ZICNOTEDATA (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, ZNOTE "
        "INTEGER, ZDATA BLOB)");
    database.execute(
        "CREATE TABLE Z_12NOTES (Z_12FOLDERS INTEGER, Z_9NOTES INTEGER, PRIMARY KEY (Z_12FOLDERS, "
        "Z_9NOTES))");
    writeFolders(database, folder.random());
    SampleTable bodies(folder, database, "ZICNOTEDATA", "Z_PK");
    const auto make = [&](std::int64_t number) { return note(folder, database, number); };
    bodies.fill(40, make);
    bodies.deleteSome([&](std::int64_t rowId) {
        database.execute("DELETE FROM ZICCLOUDSYNCINGOBJECT WHERE Z_PK=?", {kFirstNote + rowId});
        database.execute("DELETE FROM Z_12NOTES WHERE Z_9NOTES=?", {kFirstNote + rowId});
    });
    bodies.finish(3, make);
    database.close();
}

}  // namespace salvor
