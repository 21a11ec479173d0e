#include "util/PathRules.h"

#include <system_error>

namespace salvor {

namespace fs = std::filesystem;

fs::path resolvedPath(const fs::path& path) {
    constexpr int kMostLinks = 40;  // as the kernel's own limit
    std::error_code failed;
    auto current = fs::absolute(path, failed);
    if (failed) return path;
    for (int links = 0; links < kMostLinks; ++links) {
        const auto known = fs::weakly_canonical(current, failed);
        if (failed) return current.lexically_normal();
        // A dangling link counts as not existing above, yet writing goes through it.
        fs::path prefix;
        fs::path target;
        auto part = known.begin();
        for (; part != known.end() && target.empty(); ++part) {
            prefix /= *part;
            if (fs::is_symlink(fs::symlink_status(prefix, failed)))
                target = fs::read_symlink(prefix, failed);
        }
        if (target.empty()) return known.has_filename() ? known : known.parent_path();
        current = prefix.parent_path() / target;
        for (; part != known.end(); ++part) current /= *part;
    }
    return current.lexically_normal();
}

bool liesInside(const fs::path& path, const fs::path& folder) {
    std::error_code failed;
    const auto outer = resolvedPath(folder);
    for (auto inner = resolvedPath(path);; inner = inner.parent_path()) {
        // The second test sees other names of one folder: bind mounts, volumes that ignore case.
        if (inner == outer || fs::equivalent(inner, outer, failed)) return true;
        if (inner == inner.parent_path()) return false;
    }
}

}  // namespace salvor
