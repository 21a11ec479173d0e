// fuzz_replay TARGET PATH...: runs a target over files and over all files below folders, in the
// order of their names. Fails when there is none: a run that replays nothing proves nothing.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "fuzz/Target.h"
#include "util/MappedFile.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesBelow(const fs::path& path) {
    if (!fs::is_directory(path)) return {path};
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(path))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

int replay(const salvor::fuzz::Target& target, int count, char** paths) {
    int replayed = 0;
    for (int i = 0; i < count; ++i) {
        for (const fs::path& path : filesBelow(paths[i])) {
            const auto file = salvor::MappedFile::open(path);
            if (!file) {
                std::fprintf(stderr, "%s: cannot be read\n", path.c_str());
                return 1;
            }
            std::printf("%s\n", path.c_str());
            std::fflush(stdout);
            // A copy on the heap, so that a sanitizer sees reads past its end.
            const std::vector<std::uint8_t> input(file->bytes().begin(), file->bytes().end());
            target.run(input);
            ++replayed;
        }
    }
    std::printf("%s: %d inputs\n", target.name, replayed);
    return replayed > 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const auto* target = argc < 3 ? nullptr : salvor::fuzz::Target::find(argv[1]);
    if (target == nullptr) {
        std::fprintf(stderr, "usage: fuzz_replay TARGET PATH...\ntargets:");
        for (const auto* one = salvor::fuzz::Target::first(); one != nullptr; one = one->next)
            std::fprintf(stderr, " %s", one->name);
        std::fprintf(stderr, "\n");
        return 2;
    }
    try {
        return replay(*target, argc - 2, argv + 2);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", target->name, error.what());
        return 1;
    }
}
