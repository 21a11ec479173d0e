#include "app/FileExtraction.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <fnmatch.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace salvor {
namespace {

/// An open folder.
class Folder {
  public:
    explicit Folder(int descriptor) : descriptor_(descriptor) {}
    Folder(Folder&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Folder& operator=(Folder&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~Folder() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }

    explicit operator bool() const { return descriptor_ >= 0; }
    int descriptor() const { return descriptor_; }
    /// The folder `name` in it, made if need be. A link in its place is not followed.
    Folder inside(const std::string& name) const {
        if (::mkdirat(descriptor_, name.c_str(), 0777) != 0 && errno != EEXIST) return Folder(-1);
        constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
        return Folder(::openat(descriptor_, name.c_str(), kFlags));
    }
    /// A path by which others reach `name` in this very folder.
    std::filesystem::path pathOf(const std::string& name) const {
        return fmt::format("/proc/self/fd/{}/{}", descriptor_, name);
    }

  private:
    int descriptor_;
};

/// The parts of domain and path; empty when one of them would lead elsewhere.
std::vector<std::string> partsOf(const IndexEntry& entry) {
    const std::string domain = entry.domain.value_or("");
    std::vector<std::string> parts{domain};
    std::string_view rest = entry.path.view();
    while (!rest.empty()) {
        const auto slash = std::min(rest.find('/'), rest.size());
        parts.emplace_back(rest.substr(0, slash));
        rest.remove_prefix(std::min(slash + 1, rest.size()));
    }
    const auto leads = [](const std::string& part) {
        return part.empty() || part == "." || part == ".." || part.find('\0') != std::string::npos;
    };
    const bool endsOpen = entry.path.view().ends_with('/');
    if (parts.size() < 2 || endsOpen || domain.find('/') != std::string::npos ||
        std::any_of(parts.begin(), parts.end(), leads))
        return {};
    return parts;
}

class Extraction {
  public:
    Extraction(const BackupFiles& files, const BackupIndex& index, const std::stop_token& stop,
               const std::function<void(const std::string&)>& tell)
        : files_(files), index_(index), stop_(stop), tell_(tell) {}

    ExtractionSummary run(const ExtractionRequest& request) {
        const Folder root(::open(request.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        for (std::size_t i = 0; i < index_.size(); ++i) {
            if (stop_.stop_requested()) {
                summary_.cancelled = true;
                break;
            }
            const IndexEntry entry = index_.entry(i);
            if (entry.kind == EntryKind::File && isWanted(entry, request))
                extract(entry, index_.details(i), root);
        }
        return summary_;
    }

  private:
    static bool isWanted(const IndexEntry& entry, const ExtractionRequest& request) {
        if (request.domain && entry.domain != *request.domain) return false;
        const std::string path = entry.path.value_or("");
        return request.patterns.empty() ||
               std::any_of(request.patterns.begin(), request.patterns.end(),
                           [&path](const std::string& pattern) {
                               return ::fnmatch(pattern.c_str(), path.c_str(), 0) == 0;
                           });
    }

    void extract(const IndexEntry& entry, const EntryDetails& details, const Folder& root) {
        const auto facts = files_.find(entry.storedName.value_or(""));
        if (facts.state == FileState::Absent) {
            ++summary_.missing;
            return;
        }
        if (facts.state == FileState::Locked) {
            ++summary_.locked;
            return;
        }
        const auto parts = partsOf(entry);
        if (parts.empty()) {
            ++summary_.refused;
            tell_(nameOf(entry) + ": this name would lead out of the folder");
            return;
        }
        Folder folder = root.inside(parts.front());
        for (std::size_t i = 1; folder && i + 1 < parts.size(); ++i)
            folder = folder.inside(parts[i]);
        if (!folder) return fail(entry, std::generic_category().message(errno));
        write(entry, details, folder, parts.back(), facts.size);
    }

    void write(const IndexEntry& entry, const EntryDetails& details, const Folder& folder,
               const std::string& name, std::uint64_t size) {
        struct stat info {};
        if (::fstatat(folder.descriptor(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0) {
            ++summary_.there;
            return;
        }
        const auto copy =
            files_.copyTo(entry.storedName.value_or(""), folder.pathOf(name),
                          {details.modified, [this] { return stop_.stop_requested(); }});
        if (copy.end == FileCopy::End::Cancelled) {
            summary_.cancelled = true;
            return;
        }
        if (!copy) return fail(entry, copy.cause);
        ++summary_.written;
        summary_.bytes += size;
    }

    void fail(const IndexEntry& entry, const std::string& cause) {
        ++summary_.failed;
        tell_(nameOf(entry) + ": " + cause);
    }

    static std::string nameOf(const IndexEntry& entry) {
        return entry.domain.value_or("") + " " + entry.path.value_or("");
    }

    const BackupFiles& files_;
    const BackupIndex& index_;
    const std::stop_token& stop_;
    const std::function<void(const std::string&)>& tell_;
    ExtractionSummary summary_;
};

}  // namespace

ExtractionSummary extractFiles(const BackupFiles& files, const BackupIndex& index,
                               const ExtractionRequest& request, const std::stop_token& stop,
                               const std::function<void(const std::string&)>& tell) {
    return Extraction(files, index, stop, tell).run(request);
}

}  // namespace salvor
