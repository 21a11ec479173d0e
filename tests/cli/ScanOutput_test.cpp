#include "cli/ScanOutput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "report/ScanReport.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "util/FileUtils.h"

namespace salvor::cli {
namespace {

/// Asks for a stop once anything is written to it.
class StoppingBuffer : public std::stringbuf {
  public:
    std::stop_source stop;

  protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        stop.request_stop();
        return std::stringbuf::xsputn(text, size);
    }
};

TEST(ScanOutput, ACancelEndsTheJsonObjectAndLeavesAnEarlierFile) {
    ScanState state;
    for (int i = 0; i < 3000; ++i)
        state.SMSContent.emplace_back(std::make_shared<SMS>())->Message = std::string(100, 'x');
    StoppingBuffer written;
    std::ostream out(&written);
    std::ostringstream err;
    const Console console{out, err};
    ScanOptions options;
    options.jsonOnOut = true;
    EXPECT_EQ(writeResults(state, options, written.stop.get_token(), console), ExitStatus::Done);
    EXPECT_LT(written.str().size(), ScanReport::text(state).size() / 2);
    EXPECT_THAT(err.str(), testing::HasSubstr("standard output: cancelled before"));

    const TempFolder folder;
    options.jsonOnOut = false;
    options.json = folder / "result.json";
    writeWholeFile(*options.json, "earlier");
    EXPECT_EQ(writeResults(state, options, written.stop.get_token(), console), ExitStatus::Done);
    EXPECT_EQ(readWholeFile(*options.json), "earlier");
    EXPECT_THAT(FileUtils::entriesOf(folder.path()), testing::SizeIs(1));
    EXPECT_THAT(err.str(), testing::HasSubstr("result.json: cancelled before"));
}

}  // namespace
}  // namespace salvor::cli
