#include "backup/ManifestFile.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "backup/keys/FileCipher.h"
#include "sql/LogMerge.h"
#include "util/MappedFile.h"
#include "util/ReadableFile.h"

namespace salvor {
namespace {

constexpr auto kName = "Manifest.db";
constexpr auto kLogName = "Manifest.db-wal";
constexpr std::size_t kHead = 16;
constexpr std::string_view kDatabase("SQLite format 3\0", kHead);

bool beginsWith(const std::filesystem::path& file, std::string_view magic) {
    std::array<std::uint8_t, kHead> head{};
    const auto opened = ReadableFile::open(file);
    const std::size_t size = opened ? opened->readHead(head).value_or(0) : 0;
    return size >= magic.size() &&
           std::equal(magic.begin(), magic.end(), head.begin(),
                      [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

bool isLog(const std::filesystem::path& file) {
    return beginsWith(file, std::string_view("\x37\x7f\x06\x82", 4)) ||
           beginsWith(file, std::string_view("\x37\x7f\x06\x83", 4));
}

std::string decrypt(const std::filesystem::path& from, Bytes key, const std::filesystem::path& to) {
    const auto content = MappedFile::open(from);
    return content ? FileCipher(content->bytes(), key).decryptTo(to).cause : "cannot be read";
}

std::string copyOf(const std::filesystem::path& from, const std::filesystem::path& to) {
    const auto file = ReadableFile::open(from);
    return file ? file->copyTo(to).cause : "cannot be read";
}

/// Brings the log beside the copy of the index, however it is kept. What is no log is left.
std::string addLog(const std::filesystem::path& log, const std::optional<Secret>& key,
                   const std::filesystem::path& copied) {
    const std::filesystem::path beside = copied.string() + "-wal";
    std::string failure;
    if (isLog(log))
        failure = copyOf(log, beside);
    else if (key)
        failure = decrypt(log, key->bytes(), beside);
    if (failure.empty() && isLog(beside)) failure = mergeLog(copied);
    return failure;
}

}  // namespace

std::shared_ptr<const ManifestDatabase> openManifest(const BackupFiles& files,
                                                     const BackupKeys* keys,
                                                     const std::string& manifestKey,
                                                     std::shared_ptr<PrivateStore> store,
                                                     std::string& fault) {
    const auto file = files.own(kName);
    if (!file) {
        fault = "cannot be read";
        return nullptr;
    }
    const auto log = files.own(kLogName);
    const bool encrypted = !beginsWith(file.path, kDatabase);
    const bool hasLog = log && BackupFiles::factsOf(log.path).size > 0;
    std::optional<Secret> key;
    if (keys != nullptr && !manifestKey.empty())
        key = keys->open(
            {reinterpret_cast<const std::uint8_t*>(manifestKey.data()), manifestKey.size()});
    if (!(encrypted && key) && !hasLog) return ManifestDatabase::open(file.path, nullptr, fault);

    const auto bytes = BackupFiles::factsOf(file.path).size;
    const auto place =
        store->placeFor(kName, bytes + (hasLog ? 2 * BackupFiles::factsOf(log.path).size : 0));
    fault = place.empty()      ? "there is no place for a private copy"
            : encrypted && key ? decrypt(file.path, key->bytes(), place)
                               : copyOf(file.path, place);
    if (!fault.empty()) return nullptr;
    // Without its log the index is an older one, but an index.
    const std::string lost = hasLog ? addLog(log.path, key, place) : "";
    auto index = ManifestDatabase::open(place, std::move(store), fault);
    if (index != nullptr && !lost.empty()) fault = std::string(kLogName) + ": " + lost;
    return index;
}

}  // namespace salvor
