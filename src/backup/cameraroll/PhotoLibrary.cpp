#include "backup/cameraroll/PhotoLibrary.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <string_view>

#include "util/DateUtils.h"

namespace salvor {
namespace {

struct Probe {
    std::string_view table;
    PhotoLibraryLayout layout;
};

constexpr std::array<Probe, 6> kProbes{{{"Z_8ASSETS", PhotoLibraryLayout::Z8},
                                        {"Z_11ASSETS", PhotoLibraryLayout::Z11},
                                        {"Z_6ASSETS", PhotoLibraryLayout::Z6},
                                        {"Z_16ASSETS", PhotoLibraryLayout::Z16},
                                        {"Z_17ASSETS", PhotoLibraryLayout::Plain},
                                        {"Photo", PhotoLibraryLayout::Photo}}};

constexpr std::string_view kOldLibrary =
    "SELECT distinct(photo.primaryKey), photo.directory as ZDIRECTORY, photo.filename as "
    "ZFILENAME, DATETIME(photo.captureTime + 978307200, 'unixepoch', 'localtime') AS "
    "ZDATECREATED, DATETIME(photo.recordModDate + 978307200, 'unixepoch', 'localtime') AS "
    "ZMODIFICATIONDATE FROM Photo photo";

// Filled with the trashed-state column (or nothing), the join table and its asset column.
constexpr std::string_view kJoinedLibrary =
    "SELECT distinct(zgenericasset.Z_PK), zgenericasset.ZDIRECTORY, zgenericasset.ZFILENAME, "
    "{}DATETIME(zgenericasset.ZDATECREATED + 978307200, 'unixepoch', 'localtime') AS "
    "ZDATECREATED, DATETIME(zgenericasset.ZMODIFICATIONDATE + 978307200, 'unixepoch', "
    "'localtime') AS ZMODIFICATIONDATE FROM ZGENERICASSET zgenericasset inner join {} zassets on "
    "zgenericasset.Z_PK=zassets.{} WHERE zgenericasset.ZFILENAME IS NOT NULL AND "
    "zgenericasset.ZDIRECTORY IS NOT NULL";

// Kept: statement-texts.
constexpr std::string_view kPlainLibrary =
    "SELECT distinct(zgenericasset.Z_PK), zgenericasset.ZDIRECTORY, zgenericasset.ZFILENAME, "
    "zgenericasset.ZTRASHEDSTATE,DATETIME(zgenericasset.ZDATECREATED + 978307200, 'unixepoch', "
    "'localtime') AS ZDATECREATED, DATETIME(zgenericasset.ZMODIFICATIONDATE + 978307200, "
    "'unixepoch', 'localtime') AS ZMODIFICATIONDATE FROM ZGENERICASSET  WHERE   "
    "zgenericasset.ZFILENAME IS NOT NULL AND zgenericasset.ZDIRECTORY IS NOT NULL";

bool hasTrashedState(PhotoLibraryLayout layout) {
    return layout == PhotoLibraryLayout::Z16 || layout == PhotoLibraryLayout::Plain;
}

Text dateText(const Text& date) {
    return date ? Text(DateUtils::ConvertToString(DateUtils::StringToDateTime(*date))) : date;
}

}  // namespace

PhotoLibraryLayout GetPhotoDBFileType(FMDBUtils& database) {
    for (const auto& [table, layout] : kProbes) {
        auto rows = database.executeQuery(
            fmt::format("SELECT name FROM sqlite_master WHERE type='table' AND name='{}'", table));
        if (rows.next()) return layout;
    }
    return PhotoLibraryLayout::Unknown;
}

std::string assetStatement(PhotoLibraryLayout layout) {
    switch (layout) {
        case PhotoLibraryLayout::Photo:
            return std::string(kOldLibrary);
        case PhotoLibraryLayout::Z8:
            return fmt::format(kJoinedLibrary, "", "Z_8ASSETS", "Z_14ASSETS");
        case PhotoLibraryLayout::Z11:
            return fmt::format(kJoinedLibrary, "", "Z_11ASSETS", "Z_17ASSETS");
        case PhotoLibraryLayout::Z6:
            return fmt::format(kJoinedLibrary, "", "Z_6ASSETS", "Z_11ASSETS");
        case PhotoLibraryLayout::Z16:
            return fmt::format(kJoinedLibrary, "zgenericasset.ZTRASHEDSTATE,", "Z_16ASSETS",
                               "Z_23ASSETS");
        default:
            return std::string(kPlainLibrary);
    }
}

void readAssets(FMDBUtils& database, PhotoLibraryLayout layout,
                const std::function<void(Dcmi)>& found) {
    auto rows = database.executeList({assetStatement(layout).c_str()});
    // Its record, its place on a list, and the paths of its picture and thumbnail.
    rows.keepsOfEachRow(1024);
    while (rows.next()) {
        auto fileName = rows.stringForColumn("ZFILENAME");
        if (!fileName) continue;
        Dcmi asset;
        asset.ZDirecotry = rows.stringForColumn("ZDIRECTORY").value_or("");
        asset.ZFilename = *fileName;
        asset.DcmiName = *fileName;
        asset.CreatedDate = dateText(rows.stringForColumn("ZDATECREATED"));
        asset.ModifiedDate = dateText(rows.stringForColumn("ZMODIFICATIONDATE"));
        asset.Recovered = hasTrashedState(layout) && rows.intForColumn("ZTRASHEDSTATE") != 0;
        found(std::move(asset));
    }
}

bool IsKnownVideoFormat(const std::string& fileName) {
    static constexpr std::array<std::string_view, 10> kExtensions{
        "mov", "mp4", "m4v", "3gp", "3g2", "avi", "mpg", "mpeg", "mkv", "qt"};
    const auto dot = fileName.rfind('.');
    if (dot == std::string::npos) return false;
    std::string extension = fileName.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

}  // namespace salvor
