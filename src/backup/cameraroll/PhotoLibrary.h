#pragma once

#include <functional>
#include <string>

#include "backup/cameraroll/Dcmi.h"
#include "sql/FMDBUtils.h"

namespace salvor {

/// The generations of the photo library, told apart by the join table between albums and assets
/// that the schema holds.
enum class PhotoLibraryLayout {
    Photo = 0,  ///< table "Photo", before the library moved to Core Data
    Z8 = 1,
    Z11 = 2,
    Z6 = 3,
    Z16 = 4,    ///< with a trashed state
    Plain = 5,  ///< assets alone, with a trashed state
    Unknown = 6,
    ThumbnailFallback = 7,  ///< no library: a second way to look for thumbnails
};

/// The layout of an open library; the first probed table that exists decides.
PhotoLibraryLayout GetPhotoDBFileType(FMDBUtils& database);

/// The statement that lists the assets of a library; `Unknown` is read as `Plain`.
std::string assetStatement(PhotoLibraryLayout layout);

/// Hands on every asset of an open library with names, dates and the deleted mark of its row.
/// Rows without a file name are passed over.
void readAssets(FMDBUtils& database, PhotoLibraryLayout layout,
                const std::function<void(Dcmi)>& found);

/// By the extension of the file name, whatever its case.
bool IsKnownVideoFormat(const std::string& fileName);

}  // namespace salvor
