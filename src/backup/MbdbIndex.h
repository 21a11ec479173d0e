#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "backup/MDFileInfo.h"
#include "scan/BackupIndex.h"
#include "util/TextMap.h"

namespace salvor {

/// The index of a backup of iOS 4 to 9, Manifest.mbdb. Kinds follow from the Unix mode.
class MbdbIndex : public BackupIndex {
  public:
    /// Null when the file cannot be read or is no such index; `fault` then says why.
    static std::shared_ptr<const MbdbIndex> open(const std::filesystem::path& path,
                                                 std::string& fault);

    std::size_t size() const override { return files_.size(); }
    IndexEntry entry(std::size_t number) const override;
    EntryDetails details(std::size_t number) const override;
    std::optional<std::size_t> find(const std::string& storedName) const override;
    std::optional<std::size_t> find(const std::string& domain,
                                    const std::string& path) const override;
    const std::string& damage() const override;

  private:
    explicit MbdbIndex(std::vector<MDFileInfo> files);

    std::vector<MDFileInfo> files_;
    TextMap<std::uint32_t> byName_;
};

}  // namespace salvor
