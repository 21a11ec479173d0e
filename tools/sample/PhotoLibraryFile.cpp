#include "tools/sample/PhotoLibraryFile.h"

#include <array>

namespace salvor {
namespace {

/// The number in the name of a join table is the album's entity, the other the asset's.
struct JoinTable {
    int albums;
    int assets;
    bool trash;  ///< assets have a trashed state
};

constexpr std::array kJoinTables{JoinTable{0, 0, false},   JoinTable{8, 14, false},
                                 JoinTable{11, 17, false}, JoinTable{6, 11, false},
                                 JoinTable{16, 23, true},  JoinTable{17, 24, true},
                                 JoinTable{15, 22, true}};

void writeOldTable(SqliteFile& database, const std::vector<SampleAsset>& assets) {
    database.execute(
        "CREATE TABLE Photo (primaryKey INTEGER PRIMARY KEY, type INTEGER, title TEXT, "
        "captureTime INTEGER, width INTEGER, height INTEGER, userRating INTEGER, flagged INTEGER, "
        "thumbnailIndex INTEGER, orientation INTEGER, directory TEXT, filename TEXT, "
        "duration REAL, recordModDate INTEGER, savedAssetType INTEGER)");
    for (const auto& asset : assets) {
        database.execute(
            "INSERT INTO Photo (captureTime, recordModDate, directory, filename) "
            "VALUES (?, ?, ?, ?)",
            {asset.created, asset.modified, asset.directory, asset.file});
    }
}

void writeAssets(SqliteFile& database, const std::vector<SampleAsset>& assets, bool trash) {
    const std::string trashColumns = trash ? "ZTRASHEDSTATE INTEGER, ZTRASHEDDATE TIMESTAMP, " : "";
    database.execute(
        "CREATE TABLE ZGENERICASSET (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
        "ZHEIGHT INTEGER, ZKIND INTEGER, " +
        trashColumns +
        "ZWIDTH INTEGER, ZDATECREATED TIMESTAMP, ZMODIFICATIONDATE TIMESTAMP, "
        "ZDIRECTORY VARCHAR, ZFILENAME VARCHAR, ZUUID VARCHAR)");
    for (const auto& asset : assets) {
        database.execute(
            "INSERT INTO ZGENERICASSET (ZDATECREATED, ZMODIFICATIONDATE, ZDIRECTORY, ZFILENAME) "
            "VALUES (?, ?, ?, ?)",
            {asset.created, asset.modified, asset.directory, asset.file});
        if (trash && asset.trashed) {
            database.execute(
                "UPDATE ZGENERICASSET SET ZTRASHEDSTATE = 1 WHERE Z_PK = "
                "last_insert_rowid()");
        }
    }
}

void writeAlbums(SqliteFile& database, const std::vector<SampleAsset>& assets,
                 const JoinTable& join) {
    const std::string number = std::to_string(join.albums);
    const std::string table = "Z_" + number + "ASSETS";
    const std::string asset = "Z_" + std::to_string(join.assets) + "ASSETS";
    database.execute("CREATE TABLE " + table + " (Z_" + number + "ALBUMS INTEGER, " + asset +
                     " INTEGER, Z_FOK_" + asset.substr(2) + " INTEGER)");
    std::int64_t key = 0;
    for (const auto& one : assets) {
        ++key;
        for (std::int64_t album = 1; album <= one.albums; ++album)
            database.execute("INSERT INTO " + table + " VALUES (?, ?, 1)", {album, key});
    }
}

}  // namespace

void writePhotoLibrary(const std::filesystem::path& path, int layoutCode,
                       const std::vector<SampleAsset>& assets, const SqliteLayout& layout) {
    SqliteFile database(path, layout);
    if (layoutCode == 0) {
        writeOldTable(database, assets);
    } else {
        const auto& join = kJoinTables.at(static_cast<std::size_t>(layoutCode));
        writeAssets(database, assets, join.trash);
        writeAlbums(database, assets, join);
    }
    database.close();
}

}  // namespace salvor
