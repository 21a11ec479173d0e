// How fast and how sparingly deleted rows are recovered by the schema, beside reading the file as
// `cat FILE > /dev/null` does, a memchr pass over it and `sqlite3 FILE .dump`, all in one run.
// `--mb N` sets the size of the databases (100 when not given), `--file FILE` measures another one.
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

#include "carving/deep/RecoveryEngine.h"
#include "carving/format/PageStore.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/SampleRandom.h"
#include "tools/sample/SampleTable.h"
#include "tools/sample/SqliteFile.h"
#include "util/MappedFile.h"

namespace salvor::bench {
namespace {

namespace fs = std::filesystem;

double seconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double processorTime(const auto& work) {
    const double begin = seconds(CLOCK_PROCESS_CPUTIME_ID);
    work();
    return seconds(CLOCK_PROCESS_CPUTIME_ID) - begin;
}

/// Of the children that have ended.
double childrenTime() {
    rusage used{};
    getrusage(RUSAGE_CHILDREN, &used);
    return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) * 1e-6;
}

/// Memory of this process that no file stands behind, in MB, at its highest since `reset`.
class PeakMemory {
  public:
    static void reset() { std::ofstream("/proc/self/clear_refs") << "5"; }
    static double megabytes(double mapped) {
        std::ifstream status("/proc/self/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) / 1024 - mapped;
        return 0;
    }
};

void fill(SqliteFile& database, std::int64_t megabytes) {
    database.execute(
        "CREATE TABLE message (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, "
        "text TEXT, replace INTEGER DEFAULT 0, service_center TEXT, handle_id INTEGER DEFAULT 0, "
        "subject TEXT, country TEXT, attributedBody BLOB, version INTEGER DEFAULT 0, "
        "type INTEGER DEFAULT 0, service TEXT, account TEXT, error INTEGER DEFAULT 0, "
        "date INTEGER, date_read INTEGER, date_delivered INTEGER, is_delivered INTEGER DEFAULT 0, "
        "is_from_me INTEGER DEFAULT 0, is_read INTEGER DEFAULT 0, cache_roomnames TEXT)");
    database.execute("CREATE INDEX message_date ON message(date)");
    database.execute(
        "CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER, "
        "PRIMARY KEY (chat_id, message_id))");
    SampleRandom random(5);
    constexpr std::int64_t kRowsOfAMegabyte = 2600;
    database.execute("BEGIN");
    for (std::int64_t i = 1; i <= megabytes * kRowsOfAMegabyte; ++i) {
        const std::string text = sampleWords(i, 2 + random.below(random.chance(2) ? 400 : 30));
        const std::int64_t date = 398000000 + i * 61 + random.between(0, 50);
        const bool mine = random.chance(50);
        const auto none = std::monostate{};
        database.insert("message", {i,
                                    random.uuid(),
                                    text,
                                    std::int64_t{0},
                                    none,
                                    random.between(1, 300),
                                    none,
                                    random.chance(50) ? SqliteValue("us") : none,
                                    none,
                                    std::int64_t{10},
                                    std::int64_t{0},
                                    random.chance(70) ? "iMessage" : "SMS",
                                    "e:somebody@example.com",
                                    std::int64_t{0},
                                    date,
                                    mine ? SqliteValue(std::int64_t{0}) : SqliteValue(date + 60),
                                    std::int64_t{0},
                                    std::int64_t{mine ? 1 : 0},
                                    std::int64_t{mine ? 1 : 0},
                                    std::int64_t{1},
                                    none});
        database.insert("chat_message_join", {random.between(1, 300), i});
    }
    database.execute("COMMIT");
}

double catTime(const fs::path& path) {
    std::vector<char> buffer(std::size_t{128} << 10);
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const double time = processorTime([&] {
        while (::read(fd, buffer.data(), buffer.size()) > 0) {
        }
    });
    ::close(fd);
    return time;
}

double memchrTime(Bytes data) {
    std::size_t count = 0;
    const double time = processorTime([&] {
        for (const std::uint8_t* at = data.data(); at < data.data() + data.size(); ++at, ++count) {
            at = static_cast<const std::uint8_t*>(
                std::memchr(at, 0xF7, static_cast<std::size_t>(data.data() + data.size() - at)));
            if (at == nullptr) break;
        }
    });
    return count == data.size() ? 0 : time;
}

double dumpTime(const fs::path& path) {
    const double before = childrenTime();
    const std::string command =
        fmt::format("sqlite3 'file:{}?immutable=1' .dump > /dev/null", path.string());
    return std::system(command.c_str()) == 0 ? childrenTime() - before : 0;
}

void measure(const char* name, const fs::path& path) {
    const auto file = MappedFile::open(path);
    if (!file) return;
    const double megabytes = static_cast<double>(file->bytes().size()) / 1e6;
    catTime(path);
    const double cat = catTime(path);
    memchrTime(file->bytes());
    const double pass = memchrTime(file->bytes());
    const double dump = dumpTime(path);
    std::size_t rows = 0;
    PeakMemory::reset();
    const double time = processorTime([&] {
        const auto store = PageStore::open({file->bytes(), {}, {}});
        deep::recoverRows(*store, {}, [&](const deep::Facts&, const deep::RecoveredRow&) {
            ++rows;
            return true;
        });
    });
    const double memory = PeakMemory::megabytes(megabytes * 1e6 / 1048576);
    fmt::print(
        "{:<18} {:7.1f} MB {:9} rows {:7.2f} s {:7.0f} MB/s {:6.1f} x cat {:6.1f} x memchr "
        "{:5.2f} x .dump {:6.0f} MB memory\n",
        name, megabytes, rows, time, megabytes / time, time / cat, time / pass,
        dump > 0 ? time / dump : 0, memory);
}

void run(std::int64_t megabytes) {
    const TempFolder folder;
    const fs::path original = folder.path() / "messages.db";
    {
        SqliteFile database(original, {});
        fill(database, megabytes);
        database.close();
    }
    measure("nothing deleted", original);
    const std::pair<const char*, const char*> cases[] = {
        {"one in 50 deleted", "DELETE FROM message WHERE ROWID % 50 = 7"},
        {"a third deleted", "DELETE FROM message WHERE ROWID % 3 = 1"},
        {"all deleted", "DELETE FROM message WHERE ROWID > 0"}};
    for (const auto& [name, statement] : cases) {
        const fs::path path = folder.path() / "deleted.db";
        fs::copy_file(original, path, fs::copy_options::overwrite_existing);
        SqliteFile database(path);
        database.execute(statement);
        database.close();
        measure(name, path);
    }
}

}  // namespace
}  // namespace salvor::bench

int main(int argc, char** argv) {
    CLI::App parser("Measures the recovery of deleted rows by the schema.");
    std::int64_t megabytes = 100;
    parser.add_option("--mb", megabytes, "size of the databases");
    std::string file;
    parser.add_option("--file", file, "measure this database alone");
    CLI11_PARSE(parser, argc, argv);
    if (file.empty()) {
        salvor::bench::run(megabytes);
    } else {
        salvor::bench::measure("the file", file);
    }
    return 0;
}
