#include "cli/Program.h"

#include <cerrno>
#include <filesystem>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/cli/CommandLine.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/MbdbWriter.h"
#include "tools/sample/PropertyList.h"

namespace salvor::cli {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

/// A folder with what a person may name by mistake. "@" in a case stands for it.
class ProgramTest : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* name : {"empty", "backup", "foreign/Temp"})
            fs::create_directories(folder_ / name);
        for (const char* name : {"backup/Info.plist", "backup/Manifest.plist",
                                 "backup/Status.plist", "file", "garbage.mbdb"})
            writeWholeFile(folder_ / name, "\x01\x02 no property list");
        writeWholeFile(folder_ / "header.mbdb", std::string("mbdb\x05\0", 6));
        writeWholeFile(folder_ / "ticked.json", R"({"messages": [1, 2)");
        writeWholeFile(folder_ / "unknown.json", R"({"letters": [1]})");
        writeWholeFile(folder_ / "zero.json", R"({"calls": [0]})");
        writeWholeFile(folder_ / "huge.json", R"({"calls": [1e999]})");
        writeWholeFile(folder_ / "deep.json", std::string(100'000, '['));
        writeWholeFile(folder_ / "signatures.xml",
                       "<signatures><signature name='HomeDomain' database='sms.db' table='T'>"
                       "<pattern><version value='iOS56'/><header>[1];[0];[-1]</header></pattern>"
                       "</signature></signatures>");
        MbdbRecord record;
        record.domain = "HomeDomain";
        const auto index = mbdbBytes({record, record});
        writeWholeFile(folder_ / "cut.mbdb", index.substr(0, index.size() - 1));
        writeWholeFile(folder_ / "none.xml", "<signatures/>");
        writeWholeFile(folder_ / "zero", "");
        writeWholeFile(folder_ / "text",
                       "no database at all, but long enough for its header......");
        writeWholeFile(folder_ / "header", "SQLite format 3");
        writeWholeFile(folder_ / "broken.xml", "<signatures>\n<signature name=</signatures>");
        fs::create_directory_symlink(folder_ / "backup", folder_ / "link");
    }

    /// The words of `line`, "@" replaced by the folder.
    std::vector<std::string> words(const std::string& line) const {
        std::istringstream input(line);
        std::vector<std::string> all;
        for (std::string word; input >> word; all.push_back(word))
            if (const auto at = word.find('@'); at != std::string::npos)
                word.replace(at, 1, folder_.path().string());
        return all;
    }

    TempFolder folder_;
};

TEST_F(ProgramTest, AnswersWrongCommandLines) {
    const std::string kCarve = "carve --signatures @/signatures.xml --domain ";
    struct Case {
        std::string line;
        int status;
        const char* err;
    };
    const Case cases[] = {
        {"", 2, "no command"},
        {"scna @/backup", 2, "scna"},
        {"scan", 2, "BACKUP"},
        {"scan @/backup @/empty", 2, "empty"},
        {"scan @/backup --unknown", 2, "--unknown"},
        {"scan @/backup --export", 2, "--export"},
        {"scan @/backup --export=", 2, "--export"},
        {"scan @/backup --category letters", 2, "letters"},
        {"scan @/backup --category 9", 2, "9"},
        {"scan @/backup --ios seven --continue-anyway", 2, "seven"},
        {"scan @/backup --log-level loud", 2, "loud"},
        {"scan @/backup --suffix a/b", 2, "--suffix"},
        {"scan @/backup --ticked @/zero.json", 2, "--export"},
        {"scan @/backup --export @/out --ticked @/absent.json", 2, "absent.json"},
        {"scan @/backup --export @/out --ticked @/ticked.json", 2, "ticked.json: is not JSON"},
        {"scan @/backup --export @/out --ticked @/unknown.json", 2, "letters"},
        {"scan @/backup --export @/out --ticked @/zero.json", 2, "no serial number"},
        {"scan @/backup --export @/out --ticked @/deep.json", 2, "nested"},
        {"scan @/backup --export @/out --ticked @/huge.json", 2, "huge.json: holds a number"},
        {"scan @/backup --export @/backup/out", 2, "inside the backup"},
        {"scan @/backup --export @/link/new/deeper", 2, "inside the backup"},
        {"scan @/backup/Status.plist --json @/backup/x.json", 2, "inside the backup"},
        {"scan @/link --work @/backup", 2, "inside the backup"},
        {"scan @/absent", 3, "absent: no such folder"},
        {"scan @/file", 3, "file: is neither"},
        {"scan @/empty", 3,
         "empty: \"Info.plist\" or \"Manifest.plist\" is missing. Please check the backup file. "
         "Not able to recover data.Do you want to continue anyway?"},
        {"scan @/backup", 3, "Do you want to continue anyway?"},
        {"scan @/backup --signatures @/absent.xml", 3, "absent.xml: No such file"},
        {"scan @/backup --continue-anyway --export @/file/out", 5, "file"},
        {"scan @/backup --continue-anyway --export @/file", 5, "file"},
        {"scan @/backup --continue-anyway --work @/foreign", 5, "foreign/Temp is there already"},
        {"scan @/backup --continue-anyway --json @/absent/x.json", 5, "absent: No such file"},
        {"scan @/backup --continue-anyway --json @/empty", 5, "empty: is a folder"},
        {"info @/absent", 3, "absent: no such folder"},
        {"info @/empty", 3, "empty: is no backup folder"},
        {"list --root @/absent", 3, "absent: no such folder"},
        {"list --root @/file", 3, "file: is no folder"},
        {"list @/empty", 2, "empty"},
        {"index @/absent", 3, "absent: no such file"},
        {"index @/empty", 3, "empty: holds no Manifest.mbdb"},
        {"index @/backup/Info.plist", 3, "backup/Info.plist: holds no Manifest.mbdb"},
        {"index @/garbage.mbdb", 3, "garbage.mbdb: is no index"},
        {"signatures @/none.xml", 3, "none.xml: holds no signature"},
        {"signatures @/absent.xml", 3, "absent.xml: No such file"},
        {"signatures @/empty", 3, "empty: is a folder"},
        {"signatures @/broken.xml", 3, "broken.xml: "},
        {"carve @/file", 2, "--"},
        {"carve --signatures @/absent.xml --domain D --database N --table T @/file", 3,
         "absent.xml: No such file"},
        {"carve --signatures @/signatures.xml --domain D --database N --table T @/absent", 3,
         "absent: No such file"},
        {"carve --signatures @/signatures.xml --domain D --database N --table T @/empty", 3,
         "empty: is a folder"},
        {"carve --signatures @/none.xml --domain D --database N --table T @/text", 3,
         "none.xml: holds no signature"},
        {kCarve + "D --database sms.db --table T @/text", 2,
         "signatures.xml: there is no domain \"D\"; there is HomeDomain"},
        {kCarve + "homedomain --database N --table T @/text", 2,
         "no database \"N\"; there is sms.db"},
        {kCarve + "homedomain --database SMS.db --table U @/text", 2, "no table \"U\"; there is T"},
        {kCarve + "HomeDomain --database sms.db --table t --version iOS7 @/text", 2,
         "no version \"iOS7\"; there is iOS5, iOS6, iOS56"},
        {kCarve + "HomeDomain --database sms.db --table T @/zero", 3, "zero: is empty"},
        {kCarve + "HomeDomain --database sms.db --table T @/header", 3,
         "header: has 15 bytes, too few for a database"},
        {kCarve + "HomeDomain --database sms.db --table t --version ios6 @/text", 3,
         "text: is no SQLite database, and no row lies in it"},
    };
    for (const auto& [line, status, err] : cases) {
        const auto ran = runSalvor(words(line));
        EXPECT_EQ(ran.status, status) << line << '\n' << ran.err;
        EXPECT_EQ(ran.out, "") << line;
        const auto firstLine = ran.err.substr(0, ran.err.find('\n'));
        EXPECT_THAT(firstLine, StartsWith("salvor: error: ")) << line;
        EXPECT_THAT(firstLine, HasSubstr(err)) << line;
        const bool usage = ran.err.find("\nusage: salvor ") != std::string::npos;
        EXPECT_EQ(usage, status == 2) << line << '\n' << ran.err;
    }
    EXPECT_FALSE(fs::exists(folder_ / "out"));
}

TEST_F(ProgramTest, HelpsEverywhere) {
    EXPECT_THAT(runSalvor({"--version"}).out, StartsWith("salvor "));
    const auto overview = runSalvor({"--help"});
    EXPECT_EQ(overview.status, 0);
    for (const char* name : {"scan", "info", "list", "index", "recover", "carve", "signatures"}) {
        EXPECT_THAT(overview.out, HasSubstr(fmt::format("\n  {} ", name)));
        const auto help = runSalvor({name, "--help"});
        EXPECT_EQ(help.status, 0) << name;
        EXPECT_EQ(help.err, "") << name;
        EXPECT_THAT(help.out, StartsWith(fmt::format("usage: salvor {} ", name)));
        std::istringstream lines(help.out);
        for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80U) << line;
    }
    EXPECT_THAT(runSalvor({"scan", "@", "--help"}).out, HasSubstr("--continue-anyway"));
}

TEST_F(ProgramTest, AnswersUnusualCommandLines) {
    struct Case {
        const char* line;
        int status;
        const char* out;
        const char* err;
    };
    const Case cases[] = {
        // A folder called like a command, and a value that begins with a dash.
        {"scan list --suffix -x", 3, "", "list: no such folder"},
        // What is known of an incomplete backup is shown before the refusal.
        {"info @/backup --json", 3, "\"iOSMajorVersion\": 0",
         "backup: Info.plist or Manifest.plist is missing"},
        {"signatures @/signatures.xml", 0,
         "HomeDomain  sms.db  T  1 pattern  iOS5, iOS6, iOS56\nline 1: table T: no carver reads "
         "it\n",
         ""},
        {"index @/header.mbdb --json", 0, "", ""},
        {"index @/cut.mbdb", 3, "HomeDomain", "cut.mbdb: is cut off behind record 1\n"},
        {"scan @/backup --continue-anyway --category 7 --signatures @/signatures.xml", 0,
         "Category", "scanned as iOS 0.0"},
    };
    for (const auto& [line, status, out, err] : cases) {
        const auto ran = runSalvor(words(line));
        EXPECT_EQ(ran.status, status) << line;
        EXPECT_THAT(ran.out, HasSubstr(out));
        EXPECT_EQ(ran.out.empty(), *out == '\0') << line << ran.out;
        EXPECT_THAT(ran.err, HasSubstr(err));
    }
}

// The manifest of this backup replaces the version by none.
TEST_F(ProgramTest, ShowsTheVersionThatIsToldAnywhereAndTheBackupsBelowAFolder) {
    const auto backup = folder_ / "above/phone";
    fs::create_directories(backup);
    PropertyListDictionary info, manifest;
    info.text("Device Name", "Phone").text("Product Version", "7.1.2");
    info.date("Last Backup Date", 1'400'000'000).writeXml(backup / "Info.plist");
    manifest.boolean("IsEncrypted", false).date("Date", 1'300'000'000);
    manifest.writeBinary(backup / "Manifest.plist");
    EXPECT_THAT(runSalvor(words("info @/above/phone")).out,
                AllOf(HasSubstr("iOS version  7.1.2 (Info.plist)\n"),
                      HasSubstr("Scanned as   iOS 0.0 (see --ios auto)\n")));
    const char* told =
        "\"versionTold\": {\n    \"version\": \"7.1.2\",\n    \"source\": \"Info.plist\"";
    EXPECT_THAT(runSalvor(words("info @/above/phone --json")).out, HasSubstr(told));
    EXPECT_THAT(runSalvor(words("list --root @/above")).out,
                AllOf(HasSubstr("7.1.2 (Info.plist)  0.0 (see --ios auto)  2014-05-1"),
                      HasSubstr("above/phone\n")));
    EXPECT_THAT(runSalvor(words("list --root @/above --json")).out,
                HasSubstr("\"lastModified\": 1400000000"));
    const auto below = "; backups below it: " + backup.string() + "\n";
    EXPECT_THAT(runSalvor(words("info @/above")).err, HasSubstr("no Manifest.plist" + below));
    EXPECT_THAT(runSalvor(words("scan @/above")).err,
                HasSubstr("continue anyway? (--continue-anyway does)" + below));

    info.text("Product Version", "").writeXml(backup / "Info.plist");
    EXPECT_THAT(runSalvor(words("list --root @/above")).out,
                HasSubstr("-    0.0         2014-05-1"));
    if (::geteuid() == 0) return;  // to whom every folder is open
    fs::permissions(backup, fs::perms::none);
    const auto closed = runSalvor(words("list --root @/above"));
    fs::permissions(backup, fs::perms::owner_all);
    EXPECT_EQ(closed.status, 3);
    EXPECT_EQ(closed.err, "salvor: error: " + backup.string() + ": the folder cannot be read\n");
}

TEST_F(ProgramTest, TellsWhenStandardOutputCannotBeWritten) {
    const std::tuple<int, int, const char*> cases[] = {
        {0, 5, "salvor: error: standard output: Input/output error\n"},
        {ENOSPC, 5, "salvor: error: standard output: No space left on device\n"},
        {EPIPE, 0, ""},  // the reader has seen what it wanted
    };
    for (const auto& [cause, status, text] : cases) {
        std::ostringstream err;
        std::ostringstream out;
        out.setstate(std::ios::badbit);
        Console console{out, err};
        console.outError = [number = cause] { return number; };
        EXPECT_EQ(run({"--version"}, console), status) << cause;
        EXPECT_EQ(err.str(), text);
    }
}

}  // namespace
}  // namespace salvor::cli
