#include "fuzz/Target.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace salvor::fuzz {
namespace {

const Target*& listHead() {
    static const Target* head = nullptr;
    return head;
}

std::filesystem::path folderInMemory() {
    const std::filesystem::path memory = "/dev/shm";
    return ::access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

}  // namespace

Target::Target(const char* targetName, void (*targetRun)(Bytes))
    : name(targetName), run(targetRun), next(listHead()) {
    listHead() = this;
}

const Target* Target::first() {
    return listHead();
}

const Target* Target::find(const std::string& name) {
    for (const Target* target = first(); target != nullptr; target = target->next)
        if (name == target->name) return target;
    return nullptr;
}

void expect(bool holds, const std::string& what) {
    if (holds) return;
    std::fprintf(stderr, "wrong result: %s\n", what.c_str());
    std::abort();
}

std::string_view asText(Bytes input) {
    return {reinterpret_cast<const char*>(input.data()), input.size()};
}

InputFile::InputFile(Bytes content, const std::string& name) {
    static const std::filesystem::path folder =
        folderInMemory() / ("salvor-fuzz-" + std::to_string(::getpid()));
    std::filesystem::create_directory(folder);
    path_ = folder / name;
    std::FILE* file = std::fopen(path_.c_str(), "wbe");
    // The library asks for an address even where there is nothing to write.
    const bool written = file != nullptr &&
                         (content.empty() ||
                          std::fwrite(content.data(), 1, content.size(), file) == content.size()) &&
                         std::fclose(file) == 0;
    expect(written, path_.string() + ": " + std::strerror(errno));
}

InputFile::~InputFile() {
    std::error_code ignored;
    std::filesystem::remove_all(path_.parent_path(), ignored);
}

}  // namespace salvor::fuzz
