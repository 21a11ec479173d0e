#include "backup/cameraroll/PhotoLibrary.h"

#include <gmock/gmock.h>
#include <sstream>

#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/PhotoLibraryFile.h"
#include "util/DateUtils.h"

namespace salvor {
namespace {

using namespace std::string_literals;
using Layout = PhotoLibraryLayout;

class PhotoLibrary : public testing::Test {
  protected:
    /// The layout and assets of the library, through a fresh connection.
    Layout read() {
        FMDBUtils database(path.string(), SourcePolicy::Protected);
        EXPECT_TRUE(database.openDatabase());
        const Layout layout = GetPhotoDBFileType(database);
        assets.clear();
        readAssets(database, layout == Layout::Unknown ? Layout::Plain : layout,
                   [this](Dcmi asset) { assets.push_back(std::move(asset)); });
        return layout;
    }
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& asset : assets) {
            EXPECT_EQ(asset.DcmiName, asset.ZFilename);
            names.push_back(asset.ZDirecotry + "/" + asset.ZFilename +
                            (asset.Recovered ? " deleted" : ""));
        }
        return names;
    }

    TempFolder folder;
    std::filesystem::path path = folder / "Photos.sqlite";
    std::vector<Dcmi> assets;
};

TEST_F(PhotoLibrary, IsReadInEveryLayoutEachAssetOnceForAnyNumberOfAlbums) {
    const std::vector<SampleAsset> content{
        {"DCIM/100APPLE", "IMG_1.JPG"},
        {"PhotoData/Sync/100SYNCD", "IMG_2.JPG", true},
        {.directory = "DCIM", .file = "none.JPG", .albums = 0},
        {.directory = "DCIM", .file = "three.JPG", .albums = 3},
    };
    const auto date = [](std::int64_t secondsSince2001) {
        return DateUtils::DateTimeToString(Date{static_cast<double>(secondsSince2001)});
    };
    for (int code = 0; code <= 6; ++code) {
        SCOPED_TRACE(code);
        writePhotoLibrary(path, code, content);
        EXPECT_EQ(static_cast<int>(read()), code);
        std::vector<std::string> expected{"DCIM/100APPLE/IMG_1.JPG",
                                          "PhotoData/Sync/100SYNCD/IMG_2.JPG"};
        // The older layouts do not tell what lies in the trash.
        if (code >= 4) expected[1] += " deleted";
        // The layouts that ask the albums list nothing that lies in none.
        if (code < 1 || code > 4) expected.emplace_back("DCIM/none.JPG");
        expected.emplace_back("DCIM/three.JPG");
        ASSERT_EQ(names(), expected);
        EXPECT_EQ(assets[0].CreatedDate, date(content[0].created));
        EXPECT_EQ(assets[0].ModifiedDate, date(content[0].modified));
    }
}

TEST_F(PhotoLibrary, TakesTheFirstLayoutThatItHasATableOf) {
    const struct {
        const char* tables;
        Layout layout;
    } cases[] = {{"Z_16ASSETS Z_8ASSETS", Layout::Z8},  {"Z_6ASSETS Z_11ASSETS", Layout::Z11},
                 {"Z_16ASSETS Z_6ASSETS", Layout::Z6},  {"Z_17ASSETS Z_16ASSETS", Layout::Z16},
                 {"Photo Z_17ASSETS", Layout::Plain},   {"Photo ZGENERICASSET", Layout::Photo},
                 {"ZGENERICASSET", Layout::Unknown},    {"photo z_8assets", Layout::Unknown},
                 {"Z_88ASSETS Photos", Layout::Unknown}};
    for (const auto& c : cases) {
        {
            SqliteFile database(path, {});
            std::istringstream names(c.tables);
            for (std::string name; names >> name;)
                database.execute("CREATE TABLE " + name + " (x)");
            database.execute("CREATE VIEW Z_8ASSETS_view AS SELECT 1");
        }
        EXPECT_EQ(read(), c.layout) << c.tables;
        EXPECT_TRUE(assets.empty()) << "a query that fails yields no rows";
    }
}

TEST_F(PhotoLibrary, PassesOverRowsWithoutNamesAndKeepsThoseWithoutUsableDates) {
    for (int code : {0, 3, 5}) {
        writePhotoLibrary(path, code, {{"DCIM", "a.JPG"}, {"DCIM", "b.JPG"}, {"x", "c.JPG"}});
        SqliteFile database(path);
        const std::string z = code == 0 ? "" : "Z";
        const std::string update =
            "UPDATE " + (code == 0 ? "Photo"s : "ZGENERICASSET"s) + " SET " + z;
        database.execute(update + "filename = NULL WHERE rowid = 2");
        database.execute(update + "directory = NULL WHERE rowid = 3");
        if (code == 5) database.execute(update + "DATECREATED = NULL, ZMODIFICATIONDATE = 1e300");
        database.close();
        read();
        // Only the oldest statement lets a row without directory through.
        std::vector<std::string> expected{"DCIM/a.JPG"};
        if (code == 0) expected.emplace_back("/c.JPG");
        ASSERT_EQ(names(), expected);
        EXPECT_EQ(assets[0].CreatedDate.has_value(), code != 5);
        EXPECT_EQ(assets[0].ModifiedDate.has_value(), code != 5);
    }
}

// Blanks too many and one too few. Kept: statement-texts.
TEST(AssetStatement, KeepsItsBlanks) {
    EXPECT_THAT(assetStatement(Layout::Z16),
                testing::HasSubstr("ZFILENAME, zgenericasset.ZTRASHEDSTATE,DATETIME("));
    EXPECT_THAT(assetStatement(Layout::Plain),
                testing::HasSubstr("FROM ZGENERICASSET  WHERE   zgenericasset.ZFILENAME"));
}

TEST(KnownVideoFormat, GoesByTheExtension) {
    for (const char* name : {"IMG_1.MOV", "a.b.mp4", ".m4v", "x.3gP"})
        EXPECT_TRUE(IsKnownVideoFormat(name)) << name;
    for (const char* name : {"IMG_1.JPG", "mov", "a.mov.jpg", "", "a."})
        EXPECT_FALSE(IsKnownVideoFormat(name)) << name;
}

}  // namespace
}  // namespace salvor
