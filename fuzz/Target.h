#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "util/Bytes.h"

/// The fuzz targets. Each file of fuzz/targets defines one with `SALVOR_FUZZ_TARGET`; it is linked
/// with libFuzzer into a program of its own, and with all others into `fuzz_replay`, which runs
/// kept inputs under any compiler.
namespace salvor::fuzz {

/// Code that is fed arbitrary bytes. It must neither crash, hang nor take much memory, whatever
/// they are, and aborts through `expect` where it sees a wrong result.
class Target {
  public:
    /// Enters the list of the program's targets.
    Target(const char* name, void (*run)(Bytes));

    const char* name;
    void (*run)(Bytes input);
    const Target* next;  ///< in the list

    static const Target* first();
    /// The target of this name, or null.
    static const Target* find(const std::string& name);
};

/// Prints `what` and aborts unless `holds`.
void expect(bool holds, const std::string& what);

/// The input's bytes as characters.
std::string_view asText(Bytes input);

/// A file alone in a folder, in memory where the system has one, which holds `content` while the
/// object lives.
class InputFile {
  public:
    explicit InputFile(Bytes content, const std::string& name = "input");
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

}  // namespace salvor::fuzz

#define SALVOR_FUZZ_TARGET(name)                                             \
    static void fuzz_##name(::salvor::Bytes input);                          \
    static const ::salvor::fuzz::Target kTarget_##name(#name, &fuzz_##name); \
    static void fuzz_##name(::salvor::Bytes input)
