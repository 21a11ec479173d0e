#include "tests/support/TempFolder.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace salvor {

TempFolder::TempFolder(const std::string& prefix) {
    std::string name = (std::filesystem::temp_directory_path() / (prefix + "-XXXXXX")).string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::filesystem::filesystem_error("cannot make a temporary folder", name,
                                                std::error_code(errno, std::generic_category()));
    }
    path_ = name;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace salvor
