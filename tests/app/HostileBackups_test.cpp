#include <algorithm>
#include <cstdlib>
#include <fmt/ranges.h>
#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>

#include "report/ScanReport.h"
#include "scan/Categories.h"
#include "tests/app/SampleScan.h"
#include "tests/support/BoundedRun.h"
#include "tests/support/Damage.h"
#include "tests/support/HashTree.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/SampleBackup.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

using Names = std::set<std::string>;
using C = Category;

/// A file of the backup and what changes when it is broken: its own categories or lists, and those
/// that take names from it.
struct Victim {
    const char* domain;
    const char* path;
    std::set<Category> categories;
    Names further = {};

    Names lists() const {
        Names all = further;
        for (const Category category : categories) {
            for (const RowKind& kind : factsOf(category).kinds)
                all.insert({kind.live.name, kind.deleted.name});
        }
        return all;
    }
};

// What a backup holds, besides property lists, index and the pictures themselves. Calls and
// conversations take names from the contacts, and a missing WhatsApp file also decides where the
// browser history is looked for.
const std::vector<Victim> kVictims{
    {"CameraRollDomain", "Media/PhotoData/Photos.sqlite", {C::Photos}},
    {"MediaDomain", "Media/PhotoData/Photos.sqlite", {C::Photos}},
    {"HomeDomain", "Library/SMS/sms.db", {C::Messages}, {"conversations"}},
    {"HomeDomain",
     "Library/AddressBook/AddressBook.sqlitedb",
     {C::Contacts, C::Calls},
     {"conversations"}},
    {"HomeDomain", "Library/Calendar/Calendar.sqlitedb", {C::Calendar}},
    {"HomeDomain", "Library/Notes/notes.sqlite", {C::Notes}},
    {"AppDomainGroup-group.com.apple.notes", "NoteStore.sqlite", {C::Notes}},
    {"WirelessDomain", "Library/CallHistory/call_history.db", {C::Calls}},
    {"HomeDomain", "Library/CallHistoryDB/CallHistory.storedata", {C::Calls}},
    {"AppDomain-net.whatsapp.WhatsApp",
     "Documents/ChatStorage.sqlite",
     {C::WhatsApp},
     {"InternetContent"}},
    {"HomeDomain", "Library/Safari/History.plist", {C::Internet}},
    {"AppDomain-com.apple.mobilesafari", "Library/Safari/History.plist", {C::Internet}},
    {"AppDomain-com.apple.mobilesafari", "Library/Safari/History.db", {C::Internet}},
    {"HomeDomain", "Library/Preferences/com.apple.accountsettings.plist", {}, {"AccountContent"}},
    {"HomeDomain", "Library/Maps/History.plist", {}, {"MapContent"}},
    {"HomeDomain", "Library/Keyboard/dynamic-text.dat", {}, {"UserDictContent"}},
    {"HomeDomain", "Library/Keyboard/en_GB-dynamic-text.dat", {}, {"UserDictContent"}},
};
constexpr const char* kInstalledApplications = "2436e9cd7b9697b418523c55ac469fea02116cc5";

using Lists = std::map<std::string, json>;

// A scan of these samples takes a fraction of a second and 45 MB. The bounds tell one that hangs or
// swallows memory, not a slow one; a sanitizer keeps freed memory and shadows the rest.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uint64_t kMostMemory = 1024ULL << 20U;
#else
constexpr std::uint64_t kMostMemory = 256ULL << 20U;
#endif
constexpr RunBounds kBounds{std::chrono::seconds(120), kMostMemory};

/// A sample backup and what a scan shows of it before it is damaged.
class ScannedSample {
  public:
    ScannedSample(const SampleOptions& options, const fs::path& folder)
        : sample(SampleBackup::write(folder / "backup", options)),
          work_(folder / "work"),
          ios_(std::to_string(options.ios)),
          whole_(scan(ios_)) {}

    bool shows(const char* list) const { return !whole_.at(list).empty(); }

    /// Scans the damaged backup within the bounds; every list but `changed` is as it was.
    void expectOthersUnchanged(const Names& changed) const {
        const auto run = runBounded(kBounds, [&] {
            for (const auto& [name, rows] : scan(ios_)) {
                if (changed.count(name) != 0) continue;
                EXPECT_TRUE(rows == whole_.at(name))
                    << name << " has " << rows.size() << " rows, not " << whole_.at(name).size();
            }
        });
        ASSERT_EQ(run.failure, "");
    }

    /// Scans the damaged backup within the bounds, whatever is left of its lists and version.
    void expectToEnd() const {
        ASSERT_EQ(runBounded(kBounds, [&] { scan(std::nullopt); }).failure, "");
    }

    const SampleBackup sample;

  private:
    Lists scan(const std::optional<std::string>& ios) const {
        auto request = requestFor(sample.folder);
        request.workFolder = work_;
        request.ios = ios;
        request.continueAnyway = true;
        const auto before = hashTree(sample.folder);
        SampleScan job;
        EXPECT_EQ(job.run(request), ScanResult::Done);
        EXPECT_EQ(hashTree(sample.folder), before);
        const auto report = json::parse(ScanReport::text(job.state()));
        Lists all;
        for (const char* part : {"live", "deleted"}) {
            for (const auto& [name, rows] : report.at(part).items()) all[name] = rows;
        }
        all["conversations"] = report.at("conversations");
        return all;
    }

    fs::path work_;
    std::string ios_;
    Lists whole_;
};

SampleOptions optionsOf(int ios, std::uint32_t messages) {
    return {.ios = ios, .messages = messages, .secureDelete = false};
}

TEST(AllCategories, AreBroken) {
    std::set<Category> broken;
    for (const Victim& victim : kVictims)
        broken.insert(victim.categories.begin(), victim.categories.end());
    EXPECT_EQ(broken.size(), kCategoryCount);
}

class HostileBackups : public testing::TestWithParam<int> {};

TEST_P(HostileBackups, CostOneBrokenDatabaseNoOtherCategory) {
    const TempFolder folder;
    const ScannedSample scanned(optionsOf(GetParam(), 60), folder.path());
    ASSERT_TRUE(scanned.shows("DeletedSMS"));
    SampleRandom random(static_cast<std::uint64_t>(GetParam()));
    for (const Victim& victim : kVictims) {
        const fs::path file = scanned.sample.file(victim.domain, victim.path);
        if (!fs::exists(file) || !readWholeFile(file).starts_with("SQLite format 3")) continue;
        const fs::path kept = folder / "kept";
        fs::copy_file(file, kept, fs::copy_options::overwrite_existing);
        for (const Damage& damage : databaseDamages()) {
            SCOPED_TRACE(std::string(victim.path) + ": " + damage.name);
            damage.apply(file, random);
            scanned.expectOthersUnchanged(victim.lists());
            fs::copy_file(kept, file, fs::copy_options::overwrite_existing);
        }
    }
}

// Both databases of calls and both stores of notes.
INSTANTIATE_TEST_SUITE_P(Generations, HostileBackups, testing::Values(7, 9));

/// The lists that may change with the stored file of this name. Any file may begin to look like a
/// picture. Nothing for the files that tell where the others lie.
std::optional<Names> listsChangedWith(const std::string& storedName) {
    if (storedName.find('.') != std::string::npos) return std::nullopt;
    Names lists = kVictims.front().lists();
    if (storedName == kInstalledApplications) lists.insert("ApplicationContent");
    for (const Victim& victim : kVictims) {
        if (storedName == sampleStoredName(victim.domain, victim.path)) lists.merge(victim.lists());
    }
    return lists;
}

/// Samples that are mended before each damage.
class MutatedBackups : public testing::Test {
  protected:
    const ScannedSample& generation(int ios) {
        auto& one = samples[ios];
        if (!one) {
            one = std::make_unique<ScannedSample>(optionsOf(ios, 40), folder / std::to_string(ios));
            fs::copy(one->sample.folder, intact(*one), fs::copy_options::recursive);
        }
        return *one;
    }

    static fs::path intact(const ScannedSample& one) {
        return one.sample.folder.parent_path() / "intact";
    }

    static std::vector<std::string> names(const ScannedSample& one) {
        std::vector<std::string> all;
        for (const auto& entry : fs::directory_iterator(intact(one)))
            all.push_back(entry.path().filename());
        std::sort(all.begin(), all.end());
        return all;
    }

    /// Scans a backup in which `damage` has broken the files of these names and no others.
    static void scan(const ScannedSample& one, const std::vector<std::string>& damaged,
                     const std::function<void()>& damage) {
        SCOPED_TRACE(fmt::format("iOS {}, {}", one.sample.truth.ios, fmt::join(damaged, ", ")));
        fs::remove_all(one.sample.folder);
        fs::copy(intact(one), one.sample.folder, fs::copy_options::recursive);
        damage();
        Names changed;
        for (const auto& name : damaged) {
            const auto lists = listsChangedWith(name);
            if (!lists) return one.expectToEnd();
            changed.insert(lists->begin(), lists->end());
        }
        one.expectOthersUnchanged(changed);
    }

    const TempFolder folder;
    std::map<int, std::unique_ptr<ScannedSample>> samples;
};

// Every file is changed at random places, or a single one.
TEST_F(MutatedBackups, AreScannedToTheEnd) {
    const char* const wanted = std::getenv("SALVOR_MUTATION_ROUNDS");
    const int rounds = wanted != nullptr ? std::atoi(wanted) : 30;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        SampleRandom random(static_cast<std::uint64_t>(round) + 1);
        const auto& one = generation(4 + round % 6);
        auto damaged = names(one);
        if (random.chance(50)) damaged = {random.pick(damaged)};
        scan(one, damaged, [&] {
            for (const auto& name : damaged) mutateFile(one.sample.folder / name, random);
        });
    }
}

TEST_F(MutatedBackups, LoseOneCutFileOnly) {
    SampleRandom random(1);
    for (const int ios : {5, 7, 9}) {
        const auto& one = generation(ios);
        for (const auto& name : names(one)) {
            const fs::path file = one.sample.folder / name;
            scan(one, {name}, [&] { fs::resize_file(file, random.below(fs::file_size(file))); });
            if (HasFatalFailure()) return;
        }
    }
}

TEST_F(MutatedBackups, LoseTwoSwappedFilesOnly) {
    for (const int ios : {4, 7, 8}) {
        const auto& one = generation(ios);
        const auto all = names(one);
        for (std::size_t i = 0; i < all.size(); ++i) {
            const auto& name = all[i];
            const auto& other = all[(i + 1) % all.size()];
            const auto put = fs::copy_options::overwrite_existing;
            scan(one, {name, other}, [&] {
                fs::copy_file(intact(one) / name, one.sample.folder / other, put);
                fs::copy_file(intact(one) / other, one.sample.folder / name, put);
            });
            if (HasFatalFailure()) return;
        }
    }
}

}  // namespace
}  // namespace salvor
