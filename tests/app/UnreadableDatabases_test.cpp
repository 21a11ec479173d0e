#include <algorithm>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <mutex>
#include <sys/stat.h>

#include "scan/Categories.h"
#include "tests/app/SampleScan.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Break {
    const char* name;
    void (*apply)(const fs::path& file);
    const char* reason;  ///< of databases
};

const Break kBreaks[] = {
    {"empty", [](const fs::path& file) { fs::resize_file(file, 0); }, "the file is empty"},
    {"text", [](const fs::path& file) { writeWholeFile(file, std::string(9000, 'x')); },
     "file is not a database"},
    {"cut", [](const fs::path& file) { fs::resize_file(file, fs::file_size(file) / 2); }, ""},
    {"lost pages",
     [](const fs::path& file) {
         const auto size = fs::file_size(file);
         fs::resize_file(file, std::min<std::uintmax_t>(size / 2, 4096));
         fs::resize_file(file, size);
     },
     ""},
    {"pipe",
     [](const fs::path& file) {
         fs::remove(file);
         ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
     },
     "a pipe lies in its place"},
    {"folder",
     [](const fs::path& file) {
         fs::remove(file);
         fs::create_directory(file);
     },
     "a folder lies in its place"},
};

class UnreadableDatabases : public testing::Test, public ScanObserver {
  protected:
    void writeSample(int ios) {
        fs::remove_all(folder / "backup");
        SampleOptions options;
        options.ios = ios;
        options.messages = 40;
        sample = SampleBackup::write(folder / "backup", options);
    }
    fs::path placeOf(Stored file) const { return sample.folder / storedNameOf(file); }
    void onError(const std::string& text) override {
        const std::lock_guard lock(mutex);
        errors.push_back(text);
    }
    /// Scans one category and leaves its errors and outcomes.
    void scan(Category category) {
        errors.clear();
        ScanJob job(*this);
        auto request = requestFor(sample.folder);
        request.category = codeOf(category);
        ASSERT_EQ(job.runScan(request).result, ScanResult::Done);
        outcomes = job.state().fileOutcomes.all();
        fault = job.state().fileOutcomes.faultOf(category);
        EXPECT_EQ(job.state().fileOutcomes.anyFault(), fault.has_value());
    }
    FileOutcome outcomeOf(Stored file) const {
        for (const auto& one : outcomes)
            if (one.file == file) return one;
        ADD_FAILURE() << storedNameOf(file);
        return {};
    }

    TempFolder folder;
    SampleBackup sample;
    std::mutex mutex;
    std::vector<std::string> errors;
    std::vector<FileOutcome> outcomes;
    std::optional<ReadOutcome> fault;
};

TEST_F(UnreadableDatabases, AreToldOnceForTheirCategoryAlone) {
    for (const int ios : {4, 7, 9}) {
        writeSample(ios);
        for (const auto& category : categories()) {
            for (const Stored file : category.files) {
                const auto place = placeOf(file);
                if (!fs::exists(place)) continue;
                const auto content = readWholeFile(place);
                for (const auto& broken : kBreaks) {
                    SCOPED_TRACE(
                        fmt::format("iOS {}, {} {}", ios, storedNameOf(file), broken.name));
                    writeWholeFile(place, content);
                    broken.apply(place);
                    scan(category.category);
                    const auto outcome = outcomeOf(file);
                    EXPECT_EQ(outcome.outcome, ReadOutcome::Unreadable);
                    EXPECT_THAT(outcome.reason, HasSubstr(broken.reason));
                    EXPECT_NE(outcome.reason, "");
                    EXPECT_TRUE(fault);
                    EXPECT_THAT(errors, ElementsAre(describe(outcome)));
                    EXPECT_THAT(errors, ElementsAre(HasSubstr(storedNameOf(file))));
                    fs::remove_all(place);
                }
                scan(category.category == Category::Calls ? Category::Notes : Category::Calls);
                EXPECT_FALSE(fault) << "another category";
                scan(category.category);
                EXPECT_FALSE(fault) << "a file that is not there";
                EXPECT_EQ(outcomeOf(file).outcome, ReadOutcome::Absent);
                writeWholeFile(place, content);
            }
        }
    }
}

TEST_F(UnreadableDatabases, APlaceThatIsPassedOverIsNoFault) {
    writeSample(7);
    fs::rename(placeOf(Stored::WhatsApp), placeOf(Stored::WhatsAppShared));
    writeWholeFile(placeOf(Stored::WhatsApp), "");
    scan(Category::WhatsApp);
    EXPECT_THAT(errors, IsEmpty());
    EXPECT_EQ(outcomeOf(Stored::WhatsApp).outcome, ReadOutcome::Absent);
    EXPECT_THAT(outcomeOf(Stored::WhatsApp).reason, HasSubstr("ChatStorage.sqlite is read"));
    EXPECT_EQ(outcomeOf(Stored::WhatsAppShared).outcome, ReadOutcome::Read);
}

TEST_F(UnreadableDatabases, AFileThatIsCarvedAloneCountsToo) {
    writeSample(7);
    writeWholeFile(placeOf(Stored::CallsFrom8), std::string(9000, 'x'));
    scan(Category::Calls);
    EXPECT_THAT(errors, ElementsAre(HasSubstr("it does not begin like a SQLite database")));
    EXPECT_EQ(fault, ReadOutcome::Partly);
}

}  // namespace
}  // namespace salvor
