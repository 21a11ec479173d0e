#include "backup/MbdbIndex.h"

#include <utility>

#include "backup/ParseMbdb.h"

namespace salvor {
namespace {

EntryKind kindOf(std::uint32_t mode) {
    constexpr std::uint32_t kTypes = 0170000;
    switch (mode & kTypes) {
        case 0100000:
            return EntryKind::File;
        case 0040000:
            return EntryKind::Folder;
        case 0120000:
            return EntryKind::Link;
        default:
            return EntryKind::Other;
    }
}

}  // namespace

std::shared_ptr<const MbdbIndex> MbdbIndex::open(const std::filesystem::path& path,
                                                 std::string& fault) {
    auto files = ParseMbdb::ProcessMbdbFile(path);
    if (files) return std::shared_ptr<const MbdbIndex>(new MbdbIndex(std::move(*files)));
    fault = "is no index file (it does not begin with \"mbdb\")";
    return nullptr;
}

MbdbIndex::MbdbIndex(std::vector<MDFileInfo> files) : files_(std::move(files)) {
    for (std::size_t i = 0; i < files_.size(); ++i)
        byName_.tryEmplace(files_[i].strHash, static_cast<std::uint32_t>(i));
}

IndexEntry MbdbIndex::entry(std::size_t number) const {
    const MDFileInfo& file = files_.at(number);
    return {file.Domain, file.FileName, file.strHash, kindOf(file.intMode)};
}

EntryDetails MbdbIndex::details(std::size_t number) const {
    const MDFileInfo& file = files_.at(number);
    const auto target = file.strlinkTarget.empty() ? Text() : Text(file.strlinkTarget);
    return {
        file.intMode,  file.intfileLen, file.intmTime, file.intaTime,
        file.intcTime, file.intflag,    target,        keyWithClass(file.wrappedKey, file.intflag)};
}

std::optional<std::size_t> MbdbIndex::find(const std::string& storedName) const {
    const auto* number = byName_.find(storedName);
    return number != nullptr ? std::optional<std::size_t>(*number) : std::nullopt;
}

std::optional<std::size_t> MbdbIndex::find(const std::string& domain,
                                           const std::string& path) const {
    return find(ParseMbdb::storedName(domain, path));
}

const std::string& MbdbIndex::damage() const {
    static const std::string kNone;
    return kNone;
}

}  // namespace salvor
