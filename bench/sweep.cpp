// How fast the picture sweep goes over a backup, beside a plain walk over the same folder that
// reads the first 20 bytes of each file, and what memory it takes.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <sys/resource.h>
#include <unistd.h>

#include "backup/BackupSource.h"
#include "backup/extraction/PictureSweep.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using std::string_literals::operator""s;

struct Options {
    std::size_t files = 200'000;
    std::size_t fileBytes = 200;
    std::size_t pictures = 0;  ///< so many in a hundred files
    std::size_t rounds = 5;
};

void writeBackup(const fs::path& folder, const Options& options) {
    fs::create_directories(folder);
    const std::string other(options.fileBytes, 'x');
    const std::string picture = "\xFF\xD8\xFF\xE0\0\x10JFIF\0\1\1"s + other;
    for (std::size_t i = 0; i < options.files; ++i) {
        const bool isPicture = i % 100 < options.pictures;
        writeWholeFile(folder / sampleDigest(std::to_string(i)), isPicture ? picture : other);
    }
}

/// In the order of the folder, without a list and without sorting.
std::size_t plainWalk(const fs::path& folder) {
    std::size_t bytes = 0;
    DIR* stream = ::opendir(folder.c_str());
    while (const dirent* entry = stream == nullptr ? nullptr : ::readdir(stream)) {
        if (entry->d_type != DT_REG) continue;
        const int file = ::open((folder / entry->d_name).c_str(), O_RDONLY | O_CLOEXEC);
        std::array<char, kPictureHead> head{};
        const ssize_t count = ::read(file, head.data(), head.size());
        if (count > 0) bytes += static_cast<std::size_t>(count);
        ::close(file);
    }
    if (stream != nullptr) ::closedir(stream);
    return bytes;
}

double peakMegabytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

/// Files per second of the fastest round: whatever else the machine does only slows a round down.
class BestRate {
  public:
    explicit BestRate(std::size_t files) : files_(files) {}

    void measure(const std::function<void()>& round) {
        const auto start = std::chrono::steady_clock::now();
        round();
        const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
        rate_ = std::max(rate_, static_cast<double>(files_) / spent.count());
    }
    double rate() const { return rate_; }

  private:
    std::size_t files_;
    double rate_ = 0;
};

void run(const Options& options) {
    const TempFolder folder;
    const fs::path backup = folder / "backup";
    writeBackup(backup, options);
    BestRate walk(options.files);
    BestRate sweep(options.files);
    std::size_t bytes = 0;
    std::size_t photos = 0;
    for (std::size_t round = 0; round < options.rounds; ++round) {
        walk.measure([&] { bytes += plainWalk(backup); });
    }
    const double before = peakMegabytes();
    for (std::size_t round = 0; round < options.rounds; ++round) {
        ScanState state;
        useBackup(state, backup);
        WorkFolder work(folder / "work");
        sweep.measure([&] { sweepPictures(state, &work); });
        photos = state.Photos.size();
        walk.measure([&] { bytes += plainWalk(backup); });
    }
    fmt::print("{} files of {} bytes, {} pictures copied, best of {} rounds\n", options.files,
               options.fileBytes, photos, options.rounds);
    fmt::print("plain walk  {:9.0f} files per second ({} bytes read)\n", walk.rate(), bytes);
    fmt::print("sweep       {:9.0f} files per second, {:.2f} times the walk's time\n", sweep.rate(),
               walk.rate() / sweep.rate());
    fmt::print("peak memory {:.1f} MB before the first sweep, {:.1f} MB after the last\n", before,
               peakMegabytes());
}

}  // namespace
}  // namespace salvor

int main(int argc, char** argv) {
    salvor::Options options;
    CLI::App app("Files per second of the picture sweep beside a plain walk");
    app.add_option("--files", options.files)->capture_default_str();
    app.add_option("--file-bytes", options.fileBytes)->capture_default_str();
    app.add_option("--pictures", options.pictures, "in a hundred files")->capture_default_str();
    app.add_option("--rounds", options.rounds)->capture_default_str()->check(CLI::PositiveNumber);
    CLI11_PARSE(app, argc, argv);
    salvor::run(options);
    return 0;
}
