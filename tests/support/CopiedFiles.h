#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "scan/BackupFiles.h"
#include "tools/sample/Digest.h"

namespace salvor {

/// A backup whose places hold nothing: it makes a private copy in `folder` of each file that is
/// opened, with "decrypted" and its name in it, which goes with those who hold it.
class CopiedFiles : public BackupFiles {
  public:
    explicit CopiedFiles(std::filesystem::path folder) : folder_(std::move(folder)) {}
    FileFacts find(const std::string& name) const override {
        return {FileState::Present, "/encrypted/" + name};
    }
    BackupFile open(const std::string& name) const override {
        const auto copy = folder_ / name;
        writeWholeFile(copy, "decrypted " + name);
        return {FileState::Present, copy, std::shared_ptr<void>(nullptr, [copy](const void*) {
                    std::filesystem::remove(copy);
                })};
    }
    BackupFile own(const std::string&) const override { return {}; }
    std::unique_ptr<StoredFileList> list() const override { return none()->list(); }
    std::optional<std::string> storedNameAt(const std::filesystem::path& place) const override {
        if (place.parent_path() != "/encrypted") return std::nullopt;
        return place.filename().string();
    }
    std::uint64_t totalBytes() const override { return 0; }

  private:
    std::filesystem::path folder_;
};

}  // namespace salvor
