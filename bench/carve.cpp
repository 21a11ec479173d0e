// How fast files are carved, beside a plain memchr pass over the same bytes in the same run.
// `--max-mb N` sets the largest database (10, 100, 500 and 1000 MB; 100 when not given); the other
// options are Google Benchmark's. x_memchr is how many memchr passes a measurement takes as long
// as, x_cat how many times reading the file as `cat FILE > /dev/null` does.
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <random>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

#include "CarveDatabases.h"
#include "carving/TableCarver.h"
#include "carving/search/PatternMatcher.h"
#include "util/MappedFile.h"

namespace salvor::bench {
namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kContent = std::size_t{64} << 20;

CarveDatabases& databases() {
    static CarveDatabases files;
    return files;
}

// Counts a byte: the cheapest pass over all bytes that anyone could ask for.
std::size_t countByte(Bytes data) {
    std::size_t count = 0;
    const std::uint8_t* at = data.data();
    const std::uint8_t* const end = at + data.size();
    while (at < end) {
        at = static_cast<const std::uint8_t*>(
            std::memchr(at, 0xF7, static_cast<std::size_t>(end - at)));
        if (at == nullptr) break;
        ++at;
        ++count;
    }
    return count;
}

// Processor time, so that a busy machine does not slow the figures down.
double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double secondsOf(const auto& work) {
    const double begin = processorSeconds();
    work();
    return processorSeconds() - begin;
}

/// Runs `work` over `content` and sets its speed and how many memchr passes it takes as long as.
/// Returns the seconds of one run.
double measure(benchmark::State& state, Bytes content, const auto& work) {
    const auto pass = [&] { benchmark::DoNotOptimize(countByte(content)); };
    pass();  // a file is in memory from here on
    double memchrSeconds = 0;
    double workSeconds = 0;
    std::size_t found = 0;
    for (auto _ : state) {
        memchrSeconds += secondsOf(pass);
        const double seconds = secondsOf([&] { found = work(content); });
        workSeconds += seconds;
        state.SetIterationTime(seconds);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(content.size()));
    state.counters["found"] = static_cast<double>(found);
    state.counters["x_memchr"] = workSeconds / memchrSeconds;
    return workSeconds / static_cast<double>(state.iterations());
}

double measure(benchmark::State& state, const std::filesystem::path& path, const auto& work) {
    const auto file = MappedFile::open(path);
    if (file) return measure(state, file->bytes(), work);
    state.SkipWithError("the database could not be written");
    return 0;
}

/// What `cat` does with a file that is in memory: 128 KiB at a time through a buffer.
double catSeconds(const std::filesystem::path& path) {
    std::vector<char> buffer(std::size_t{128} << 10);
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const double seconds = secondsOf([&] {
        while (::read(fd, buffer.data(), buffer.size()) > 0) benchmark::ClobberMemory();
    });
    ::close(fd);
    return seconds;
}

void memchrPass(benchmark::State& state) {
    measure(state, databases().file(state.range(0), Layout::Plain),
            [](Bytes data) { return countByte(data); });
}

/// Every header of every page, without decoding what follows it.
void matcher(benchmark::State& state) {
    PatternMatcher matcher;
    matcher.use(messageSignatures().Find(kDomain, kDatabase, kTable)->TablePatterns);
    measure(state, databases().file(state.range(0), Layout::Plain), [&](Bytes data) {
        std::size_t found = 0;
        SQLiteTableHeaderInfo info;
        for (std::size_t page = 0; page < data.size(); page += kPage) {
            matcher.begin(slice(data, page, kPage));
            std::int64_t offset = 0;
            while (matcher.find(offset, info) == MatchResult::Found) {
                offset = info.DataStartIndex();
                ++found;
            }
        }
        return found;
    });
}

/// Bytes in which no header stands, a region after the other, under the message patterns that the
/// program ships.
void searchInVain(benchmark::State& state, const std::vector<std::uint8_t>& content) {
    static const SqLiteTableSignatures kShipped = [] {
        SqLiteTableSignatures signatures;
        signatures.loadSignatures(SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml");
        return signatures;
    }();
    const auto signature = kShipped.Find("HomeDomain", "sms.db", "MESSAGE");
    if (!signature) return state.SkipWithError("the shipped signatures could not be read");
    PatternMatcher matcher;
    matcher.use(signature->TablePatterns);
    measure(state, content, [&](Bytes data) {
        std::size_t found = 0;
        SQLiteTableHeaderInfo info;
        for (std::size_t page = 0; page < data.size(); page += kPage) {
            matcher.begin(slice(data, page, kPage));
            found += matcher.find(0, info) == MatchResult::Found ? 1U : 0U;
        }
        return found;
    });
}

std::vector<std::uint8_t> repeated(std::string_view text) {
    std::vector<std::uint8_t> bytes(kContent);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(text[i % text.size()]);
    return bytes;
}

std::vector<std::uint8_t> noise() {
    std::vector<std::uint8_t> bytes(kContent);
    std::mt19937_64 random(1);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

void registerVainSearches() {
    using namespace std::string_view_literals;
    static const std::pair<const char*, std::vector<std::uint8_t>> kContents[] = {
        {"search_zeros", repeated("\0"sv)},
        {"search_text", repeated("The train leaves at seven, platform 4; bring the blue bag. ")},
        {"search_cyrillic", repeated("Поезд отходит в семь, возьми синюю сумку. ")},
        {"search_noise", noise()},
    };
    for (const auto& [name, content] : kContents) {
        benchmark::RegisterBenchmark(
            name, [&bytes = content](auto& state) { searchInVain(state, bytes); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}

void carve(benchmark::State& state, Layout layout, bool fullSearch) {
    TableCarveOptions options;
    options.domain = kDomain;
    options.database = kDatabase;
    options.table = kTable;
    options.fullSearch = fullSearch;
    const auto path = databases().file(state.range(0), layout);
    catSeconds(path);  // the file is in memory from here on
    const double readSeconds = catSeconds(path);
    const double carveSeconds = measure(state, path, [&](Bytes) {
        std::size_t rows = 0;
        carveTable(messageSignatures(), options, path, {}, [&](const CarvedRow&) { ++rows; });
        return rows;
    });
    state.counters["x_cat"] = carveSeconds / readSeconds;
}

void registerAll(std::int64_t largest) {
    const auto add = [largest](const char* name, auto function) {
        auto* one = benchmark::RegisterBenchmark(name, function);
        for (const std::int64_t megabytes : {10, 100, 500, 1000}) {
            if (megabytes <= largest) one->Arg(megabytes);
        }
        one->UseManualTime()->Unit(benchmark::kMillisecond)->ArgName("MB");
    };
    registerVainSearches();
    add("memchr", memchrPass);
    add("matcher", matcher);
    add("carve_plain", [](benchmark::State& state) { carve(state, Layout::Plain, false); });
    add("carve_auto_vacuum", [](benchmark::State& state) { carve(state, Layout::Vacuum, false); });
    add("carve_full_search", [](benchmark::State& state) { carve(state, Layout::Plain, true); });
}

// Takes our own option out of the arguments.
std::int64_t takeLargest(int& count, char** arguments) {
    for (int i = 1; i + 1 < count; ++i) {
        if (std::string_view(arguments[i]) != "--max-mb") continue;
        const std::int64_t largest = std::atoll(arguments[i + 1]);
        for (int next = i + 2; next < count; ++next) arguments[next - 2] = arguments[next];
        count -= 2;
        return largest;
    }
    return 100;
}

}  // namespace
}  // namespace salvor::bench

int main(int count, char** arguments) {
    salvor::bench::registerAll(salvor::bench::takeLargest(count, arguments));
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
