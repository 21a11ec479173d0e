#include "app/ResultExport.h"

#include <gmock/gmock.h>

#include "app/ScanSummary.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

TEST(Results, SayWhatIsNotInTheExport) {
    const TempFolder folder;
    ScanState state;
    state.SMSContent.push_back(std::make_shared<SMS>());
    state.WhatsAppContent.push_back(std::make_shared<WhatsApp>());
    state.Photos.push_back(std::make_shared<Photo>());
    ExportRequest request;
    request.folder = folder.path();
    request.ticked = {{1, {1}}, {2, {1}}, {5, {1}}};
    auto report = exportResults(state, request);
    EXPECT_THAT(report.errors, IsEmpty());
    EXPECT_THAT(report.notices,
                ElementsAre("WhatsApp: ticked rows of this category are never exported",
                            EndsWith("lists without a file: 1")));
    EXPECT_TRUE(report.whole);
    EXPECT_TRUE(std::filesystem::exists(report.folder / "SMS.csv"));

    std::stop_source stop;
    stop.request_stop();
    request.ticked.reset();
    report = exportResults(state, request, {stop.get_token(), {}, nullptr});
    EXPECT_TRUE(report.cancelled);
    EXPECT_THAT(report.notices, ElementsAre(EndsWith(": the export was cancelled after 0 files")));

    writeWholeFile(folder / "file", "");
    request.folder = folder / "file";
    report = exportResults(state, request);
    EXPECT_TRUE(report.folder.empty());
    EXPECT_THAT(report.errors, ElementsAre(EndsWith(": Not a directory")));
}

TEST(Results, AreCountedInASentence) {
    ScanState state;
    state.SMSContent.resize(1234567);
    state.Photos.resize(2);
    state.DeletedVideos.resize(999);
    using std::chrono::milliseconds;
    EXPECT_EQ(summaryText(state, 0, ScanResult::Done, milliseconds(1260)),
              "Done after 1.3 s: 1,234,569 live and 999 deleted records.");
    EXPECT_EQ(summaryText(state, 2, ScanResult::Cancelled, milliseconds(0)),
              "Cancelled after 0.0 s: 2 live and 999 deleted records.");
}

}  // namespace
}  // namespace salvor
