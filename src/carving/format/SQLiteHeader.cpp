#include "carving/format/SQLiteHeader.h"

#include <algorithm>
#include <string_view>

#include "carving/format/SQLiteUtils.h"
#include "util/MappedFile.h"

namespace salvor {
namespace {

Text asciiText(Bytes data) {
    if (std::any_of(data.begin(), data.end(), [](std::uint8_t byte) { return byte >= 0x80; })) {
        return std::nullopt;
    }
    return std::string(data.begin(), data.end());
}

}  // namespace

std::optional<SQLiteHeader> SQLiteHeader::initWithDatabasePath(const std::filesystem::path& path) {
    return ReadSQLiteDatabaseHeader(path);
}

std::optional<SQLiteHeader> SQLiteHeader::ReadSQLiteDatabaseHeader(
    const std::filesystem::path& path) {
    const auto file = MappedFile::open(path);
    if (!file) return std::nullopt;
    auto header = fromBytes(file->bytes());
    if (header) header->SQLiteDatabaseFileFullPath = path.string();
    return header;
}

bool SQLiteHeader::beginsLikeDatabase(Bytes file) {
    static constexpr std::string_view kMagic("SQLite format 3\0", 16);
    return file.size() >= kMagic.size() && std::equal(kMagic.begin(), kMagic.end(), file.begin());
}

std::optional<SQLiteHeader> SQLiteHeader::fromBytes(Bytes file) {
    if (file.size() < kHeaderBytes) return std::nullopt;
    SQLiteHeader header;
    header.Signature = asciiText(slice(file, 0, 100));
    header.PageSize = *SQLiteUtils::convertToint16fromData(file, 16);
    header.NumberOfPages = *SQLiteUtils::int32FromData(file, 28);
    header.PageNumberOfFirstListTrunkPage = *SQLiteUtils::int32FromData(file, 32);
    header.TotalNumberOfFreeListPages = *SQLiteUtils::int32FromData(file, 36);
    header.HighestNUmberedRootPageNumber = *SQLiteUtils::int32FromData(file, 52);
    header.IsAutoVacuum = header.HighestNUmberedRootPageNumber > 0;
    return header;
}

std::int32_t SQLiteHeader::SQLiteDatabaseSizeInBytes() const {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(NumberOfPages) *
                                     static_cast<std::uint32_t>(PageSize));
}

}  // namespace salvor
