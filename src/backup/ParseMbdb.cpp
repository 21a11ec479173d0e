#include "backup/ParseMbdb.h"

#include <algorithm>
#include <array>

#include "backup/FileKind.h"
#include "backup/IndexCursor.h"
#include "util/MappedFile.h"
#include "util/StoredName.h"

namespace salvor {
namespace {

constexpr std::array<std::uint8_t, 4> kMagic{'m', 'b', 'd', 'b'};
constexpr std::size_t kFirstRecord = 6;

void readProperties(IndexCursor& cursor, MDFileInfo& info) {
    if (info.intNumberofProps == 0) return;
    auto& properties = info.dicProperties.emplace();
    for (std::uint32_t i = 0; i < info.intNumberofProps && !cursor.cutShort(); ++i) {
        std::string name = cursor.getstring();
        std::string value = cursor.getstring();
        if (!name.empty()) properties.insert_or_assign(std::move(name), std::move(value));
    }
}

MDFileInfo readRecord(IndexCursor& cursor) {
    MDFileInfo info;
    info.StartOffset = static_cast<std::int64_t>(cursor.position());
    info.intStartOffset = static_cast<std::uint32_t>(cursor.position());
    info.Domain = cursor.getstring();
    info.FileName = cursor.getstring();
    info.strlinkTarget = cursor.getstring();
    info.strDataHash = cursor.getstring();
    info.wrappedKey = cursor.getbytes();
    info.strUnknown1 = IndexCursor::textOf(info.wrappedKey);
    info.intMode = cursor.getint(2);
    for (auto* field : {&info.intUnknown2, &info.intUnknown3, &info.intUserID, &info.intGroupID,
                        &info.intmTime, &info.intaTime, &info.intcTime}) {
        *field = cursor.getint(4);
    }
    info.intfileLen = cursor.getint(8);
    info.intflag = cursor.getint(1);
    info.intNumberofProps = cursor.getint(1);
    readProperties(cursor, info);
    return info;
}

}  // namespace

std::optional<std::vector<MDFileInfo>> ParseMbdb::ProcessMbdbFile(
    const std::filesystem::path& path) {
    const auto file = MappedFile::open(path);
    if (!file) return std::nullopt;
    std::vector<MDFileInfo> records;
    const End end =
        visit(file->bytes(), [&](MDFileInfo&& info) { records.push_back(std::move(info)); });
    return end == End::NoIndex ? std::nullopt : std::optional(std::move(records));
}

ParseMbdb::End ParseMbdb::visit(Bytes index, const std::function<void(MDFileInfo&&)>& take) {
    if (index.size() < kMagic.size() || !std::equal(kMagic.begin(), kMagic.end(), index.begin())) {
        return End::NoIndex;
    }
    if (index.size() < kFirstRecord) return End::CutShort;
    IndexCursor cursor(index, kFirstRecord);
    while (!cursor.atEnd()) {
        MDFileInfo info = readRecord(cursor);
        if (cursor.cutShort()) return End::CutShort;
        info.RecordType = classifyFile(info.intMode, info.FileName);
        info.strHash = storedName(info.Domain, info.FileName);
        take(std::move(info));
    }
    return End::Whole;
}

std::string ParseMbdb::digest(const std::string& text) {
    return salvor::storedName(text);
}

std::string ParseMbdb::storedName(const std::string& domain, const std::string& fileName) {
    return digest(domain + "-" + fileName);
}

}  // namespace salvor
