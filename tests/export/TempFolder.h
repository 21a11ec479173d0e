#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace salvor {

/// A folder of its own for one test, removed with it.
class TempFolder {
  public:
    TempFolder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "salvor-export-XXXXXX").string();
        path_ = ::mkdtemp(pattern.data());
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() { std::filesystem::remove_all(path_); }

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

inline std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return "(no file)";
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Appends a default row to a list and gives access to it.
template <class Row>
Row& add(std::vector<std::shared_ptr<Row>>& list) {
    list.push_back(std::make_shared<Row>());
    return *list.back();
}

}  // namespace salvor
