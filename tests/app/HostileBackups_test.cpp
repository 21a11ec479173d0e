#include <cstdlib>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <set>

#include "app/ScanJob.h"
#include "export/ScanReport.h"
#include "tests/support/Damage.h"
#include "tests/support/HashTree.h"
#include "tests/support/SampleBackup.h"
#include "tests/support/TempFolder.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

/// A file of the backup and the lists that change when it is broken: its own, and those that take
/// names from it.
struct Victim {
    const char* domain;
    const char* path;
    std::set<std::string> lists;
};

const std::set<std::string> kNamedFromContacts{"ContactContent", "DeletedContact", "CallLogContent",
                                               "DeletedCallLog", "conversations"};

// A missing WhatsApp file also decides where the browser history is looked for.
const std::vector<Victim> kVictims{
    {"HomeDomain", "Library/SMS/sms.db", {"SMSContent", "DeletedSMS", "conversations"}},
    {"HomeDomain", "Library/AddressBook/AddressBook.sqlitedb", kNamedFromContacts},
    {"HomeDomain", "Library/Calendar/Calendar.sqlitedb", {"CalendarContent", "DeletedCalendar"}},
    {"HomeDomain", "Library/Notes/notes.sqlite", {"NotesContent", "DeletedNotes"}},
    {"AppDomainGroup-group.com.apple.notes", "NoteStore.sqlite", {"NotesContent", "DeletedNotes"}},
    {"WirelessDomain", "Library/CallHistory/call_history.db", {"CallLogContent", "DeletedCallLog"}},
    {"HomeDomain",
     "Library/CallHistoryDB/CallHistory.storedata",
     {"CallLogContent", "DeletedCallLog"}},
    {"AppDomain-net.whatsapp.WhatsApp",
     "Documents/ChatStorage.sqlite",
     {"WhatsAppContent", "DeletedWhatsApp", "InternetContent"}},
    {"CameraRollDomain",
     "Media/PhotoData/Photos.sqlite",
     {"Photos", "Videos", "DeletedPhotos", "DeletedVideos"}},
    {"MediaDomain",
     "Media/PhotoData/Photos.sqlite",
     {"Photos", "Videos", "DeletedPhotos", "DeletedVideos"}},
};

class HostileBackups : public testing::TestWithParam<int> {
  protected:
    void SetUp() override {
        options.ios = GetParam();
        options.messages = 60;
        options.secureDelete = false;
        sample = SampleBackup::write(folder / "backup", options);
        whole = lists(scan());
        ASSERT_FALSE(whole.at("DeletedSMS").empty());
    }

    json scan() const {
        ScanObserver nobody;
        ScanJob job(nobody);
        ScanRequest request;
        request.source = sample.folder;
        request.workFolder = folder / "work";
        request.signatures = SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml";
        request.ios = std::to_string(GetParam());
        request.continueAnyway = true;
        const auto before = hashTree(sample.folder);
        EXPECT_EQ(job.runScan(request).result, ScanResult::Done);
        EXPECT_EQ(hashTree(sample.folder), before);
        return json::parse(ScanReport::text(job.state()));
    }

    static std::map<std::string, json> lists(const json& report) {
        std::map<std::string, json> all;
        for (const char* part : {"live", "deleted"}) {
            for (const auto& [name, rows] : report.at(part).items()) all[name] = rows;
        }
        all["conversations"] = report.at("conversations");
        return all;
    }

    /// Scans the damaged backup; every list but `changed` is as it was.
    void expectOthersUnchanged(const std::set<std::string>& changed) const {
        for (const auto& [name, rows] : lists(scan())) {
            if (changed.count(name) != 0) continue;
            EXPECT_TRUE(rows == whole.at(name))
                << name << " has " << rows.size() << " rows, not " << whole.at(name).size();
        }
    }

    TempFolder folder;
    SampleOptions options;
    SampleBackup sample;
    std::map<std::string, json> whole;
};

TEST_P(HostileBackups, CostOneBrokenDatabaseNoOtherCategory) {
    SampleRandom random(static_cast<std::uint64_t>(GetParam()));
    for (const Victim& victim : kVictims) {
        const fs::path file = sample.file(victim.domain, victim.path);
        if (!fs::exists(file)) continue;
        const fs::path kept = folder / "kept";
        fs::copy_file(file, kept, fs::copy_options::overwrite_existing);
        for (const Damage& damage : databaseDamages()) {
            SCOPED_TRACE(std::string(victim.path) + ": " + damage.name);
            damage.apply(file, random);
            expectOthersUnchanged(victim.lists);
            fs::copy_file(kept, file, fs::copy_options::overwrite_existing);
        }
    }
}

// Both databases of calls and both stores of notes.
INSTANTIATE_TEST_SUITE_P(Generations, HostileBackups, testing::Values(7, 9));

/// Every file of a backup is changed at random places, some in each round.
TEST(MutatedBackups, AreScannedToTheEnd) {
    const char* const wanted = std::getenv("SALVOR_MUTATION_ROUNDS");
    const int rounds = wanted != nullptr ? std::atoi(wanted) : 60;
    for (int round = 0; round < rounds; ++round) {
        const TempFolder folder;
        SampleRandom random(static_cast<std::uint64_t>(round) + 1);
        SampleOptions options;
        options.ios = 4 + round % 6;
        options.messages = 40;
        options.seed = random.next();
        const auto sample = SampleBackup::write(folder / "backup", options);
        for (const auto& entry : fs::recursive_directory_iterator(sample.folder)) {
            if (entry.is_regular_file() && random.chance(60)) mutateFile(entry.path(), random);
        }
        const auto before = hashTree(sample.folder);
        ScanObserver nobody;
        ScanJob job(nobody);
        ScanRequest request;
        request.source = sample.folder;
        request.signatures = SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml";
        request.ios = std::to_string(options.ios);
        request.continueAnyway = true;
        EXPECT_EQ(job.runScan(request).result, ScanResult::Done) << "round " << round;
        EXPECT_TRUE(json::accept(ScanReport::text(job.state()))) << "round " << round;
        EXPECT_EQ(hashTree(sample.folder), before) << "round " << round;
    }
}

}  // namespace
}  // namespace salvor
