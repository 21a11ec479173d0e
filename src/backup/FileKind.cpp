#include "backup/FileKind.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "backup/ParseMbdb.h"
#include "util/Utf8.h"

namespace salvor {
namespace {

constexpr std::uint32_t kTypeMask = 0xE000;
constexpr std::uint32_t kRegularFile = 0x8000;

using namespace std::string_view_literals;

template <std::size_t N>
bool containsAny(std::string_view text, const std::array<std::string_view, N>& parts) {
    return std::any_of(parts.begin(), parts.end(), [&](std::string_view part) {
        return text.find(part) != std::string_view::npos;
    });
}

std::string_view lastPathComponent(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos || path.size() == 1 ? path : path.substr(slash + 1);
}

std::string_view withoutExtension(std::string_view component) {
    const auto dot = component.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? component : component.substr(0, dot);
}

}  // namespace

std::string extensionText(const std::string& fileName) {
    const auto name = withoutExtension(lastPathComponent(fileName));
    std::string tail = fileName.substr(utf16Offset(fileName, utf16Length(name)));
    tail.erase(std::remove(tail.begin(), tail.end(), ' '), tail.end());
    return tail;
}

RecordType classifyFile(std::uint32_t mode, const std::string& fileName) {
    if ((mode & kTypeMask) != kRegularFile) return RecordType::NotRegular;
    const std::string extension = extensionText(fileName);
    if (ParseMbdb::isDBData(extension)) return RecordType::Database;
    if (ParseMbdb::isPictureData(extension)) return RecordType::Picture;
    if (ParseMbdb::isVideoData(extension)) return RecordType::AudioVideo;
    if (ParseMbdb::isPlistData(extension)) return RecordType::PropertyList;
    return RecordType::Other;
}

bool ParseMbdb::isPlistData(std::string_view extension) {
    static constexpr std::array kParts{".plist"sv, ".Plist"sv, ".PLIST"sv};
    return containsAny(extension, kParts);
}

bool ParseMbdb::isDBData(std::string_view extension) {
    static constexpr std::array kParts{".DB"sv, ".SQLITE"sv, ".sqlite"sv, ".db"sv};
    return extension == ".cd" || containsAny(extension, kParts);
}

bool ParseMbdb::isPictureData(std::string_view extension) {
    static constexpr std::array kParts{".bmp"sv, ".gif"sv,  ".jpg"sv, ".jpeg"sv,
                                       ".png"sv, ".tiff"sv, ".BMP"sv, ".GIF"sv,
                                       ".JPG"sv, ".JPEG"sv, ".PNG"sv, ".TIFF"sv};
    return containsAny(extension, kParts);
}

bool ParseMbdb::isVideoData(std::string_view extension) {
    static constexpr std::array kParts{".mp3"sv,  ".wav"sv,  ".mov"sv, ".vob"sv, ".avi"sv, ".mp4"sv,
                                       ".divx"sv, ".aiff"sv, ".caf"sv, ".m4a"sv, ".MP3"sv, ".WAV"sv,
                                       ".MOV"sv,  ".VOB"sv,  ".AVI"sv, ".MP4"sv, ".DIVX"sv};
    return containsAny(extension, kParts);
}

}  // namespace salvor
