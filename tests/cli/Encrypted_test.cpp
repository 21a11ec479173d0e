#include <filesystem>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sstream>
#include <sys/stat.h>

#include "tests/cli/CommandLine.h"
#include "tests/support/HashTree.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"
#include "tools/sample/ManifestWriter.h"
#include "tools/sample/SampleBackup.h"

namespace salvor::cli {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class EncryptedBackups : public testing::Test {
  protected:
    void SetUp() override {
        write("plain", {});
        write("locked", std::string("geheim"));
        writeWholeFile(folder / "right", "geheim\r\n");
        writeWholeFile(folder / "wrong", "geheim\n\n");
    }
    void write(const char* name, std::optional<std::string> password) const {
        SampleOptions options;
        options.ios = 18;
        options.messages = 60;
        options.password = std::move(password);
        options.firstRounds = 50;
        SampleBackup::write(folder / name, options);
    }
    std::string at(const std::string& name) const { return folder / name; }
    /// Runs a command on the encrypted backup with the password in this file, or without.
    CommandLine run(std::vector<std::string> words, const char* password = nullptr) const {
        words.insert(words.begin() + 1, at("locked"));
        if (password != nullptr) words.insert(words.end(), {"--password-file", at(password)});
        return runSalvor(words);
    }
    /// Whether two results list the same; places of pictures name the backup itself.
    bool listTheSame(const std::string& one, const std::string& other) const {
        auto first = json::parse(readWholeFile(at(one)));
        const auto second = json::parse(readWholeFile(at(other)));
        for (const char* key : {"live", "deleted", "counts"}) {
            auto lists = first[key].dump();
            for (std::size_t i = 0; (i = lists.find(at("locked/"), i)) != std::string::npos;)
                lists.replace(i, at("locked/").size(), at("plain/"));
            if (lists != second[key].dump()) return false;
        }
        return true;
    }

    const TempFolder folder;
};

TEST_F(EncryptedBackups, AreListedAndScannedWithTheirPasswordLikePlainOnes) {
    const auto before = hashTree(at("locked"));
    const auto index = run({"index", "--json"}, "right");
    EXPECT_EQ(index.status, 0) << index.err;
    EXPECT_EQ(index.out, runSalvor({"index", at("plain/Manifest.db"), "--json"}).out);
    EXPECT_THAT(index.out, HasSubstr("\"kind\":\"link\",\"target\":\"com.apple.preferences\""));
    EXPECT_THAT(index.out, HasSubstr("\"flag\":4"));

    const auto result = run({"scan", "--work", at("w"), "--json", at("e.json")}, "right");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(runSalvor({"scan", at("plain"), "--work", at("w"), "--json", at("p.json")}).status,
              0);
    EXPECT_TRUE(listTheSame("e.json", "p.json"));
    EXPECT_GT(json::parse(readWholeFile(at("e.json")))["counts"]["SMSCount"], 0);
    EXPECT_EQ(json::parse(readWholeFile(at("e.json")))["device"]["iOSMajorVersion"], 18);
    EXPECT_EQ(hashTree(at("locked")), before);
}

TEST_F(EncryptedBackups, EndWithTheirStatusWithoutTheRightPassword) {
    const auto before = hashTree(folder.path());
    for (const char* command : {"scan", "index", "info"}) {
        const auto wrong = run({command}, "wrong");
        EXPECT_EQ(wrong.status, 4) << command;
        EXPECT_THAT(wrong.err, HasSubstr("the password does not open this backup")) << command;
        const auto none = run({command});
        EXPECT_EQ(none.status, std::string_view(command) == "info" ? 0 : 4) << none.err;
        EXPECT_EQ(run({command}, "missing").status, 3);
    }
    EXPECT_THAT(run({"info"}).out, HasSubstr("Encrypted      yes"));
    EXPECT_THAT(run({"info"}, "right").out, HasSubstr("The password opens this backup."));
    EXPECT_EQ(run({"extract", "--to", at("out")}, "wrong").status, 4);
    EXPECT_EQ(run({"extract", "--to", at("out")}).status, 4);
    fs::remove_all(at("out"));
    EXPECT_EQ(hashTree(folder.path()), before);
}

TEST_F(EncryptedBackups, AreOpenedByWhatIsTypedAtATerminal) {
    std::ostringstream out;
    std::ostringstream err;
    Console console{out, err};
    console.asks = true;
    int questions = 0;
    console.hiddenLine = [&] { return ++questions == 1 ? "geheim" : ""; };
    EXPECT_EQ(cli::run({"index", at("locked")}, console), 0) << err.str();
    EXPECT_THAT(out.str(), HasSubstr("Library/SMS/sms.db"));
    EXPECT_THAT(err.str(), StartsWith("Password of the encrypted backup locked"));
    EXPECT_EQ(cli::run({"index", at("locked")}, console), 4);
    EXPECT_EQ(cli::run({"index", at("plain")}, console), 0);
    EXPECT_EQ(cli::run({"info", at("locked")}, console), 0);
    EXPECT_EQ(questions, 2) << "nothing else asks";
}

TEST_F(EncryptedBackups, GiveTheirFilesAway) {
    const auto extracted = run({"extract", "--to", at("out")}, "right");
    EXPECT_EQ(extracted.status, 0) << extracted.err;
    EXPECT_THAT(extracted.out, HasSubstr(" files written, "));
    const auto plain = readWholeFile(folder / "plain/3d/3d0d7e5fb2ce288813306e4d4636395e047a3d28");
    const fs::path copied = folder / "out/HomeDomain/Library/SMS/sms.db";
    EXPECT_TRUE(readWholeFile(copied) == plain);
    struct stat info {};
    ASSERT_EQ(::stat(copied.c_str(), &info), 0);
    EXPECT_EQ(info.st_mtime, 1728000000 + 200 * 86400);
    // Nothing is written twice; what is asked for alone is.
    EXPECT_THAT(run({"extract", "--to", at("out")}, "right").out, StartsWith("0 files written"));
    const auto some = run({"extract", "--to", at("some"), "--domain", "HomeDomain", "--path",
                           "*/sms.db", "--path", "*AddressBook.s*"},
                          "right");
    EXPECT_THAT(some.out, StartsWith("2 files written")) << some.err;
    EXPECT_EQ(run({"extract", "--to", at("locked/out")}, "right").status, 2);
    fs::remove(folder / "locked/3d/3d0d7e5fb2ce288813306e4d4636395e047a3d28");
    EXPECT_THAT(run({"extract", "--to", at("out")}, "right").out, HasSubstr("1 not in the backup"));
}

TEST_F(EncryptedBackups, NamesInAnIndexLeadNowhereElse) {
    std::vector<MbdbRecord> records;
    for (const auto& [domain, path] : {std::pair{"HomeDomain", "../../out-of-it"},
                                       {"HomeDomain", "/etc/x"},
                                       {"..", "x"},
                                       {"Home/Domain", "x"},
                                       {"HomeDomain", "a/./b"},
                                       {"HomeDomain", "a//b"},
                                       {"HomeDomain", "link/x"},
                                       {"HomeDomain", "fine"},
                                       {"", "x"}}) {
        MbdbRecord record;
        record.domain = domain;
        record.path = path;
        records.push_back(record);
        const auto name = sampleStoredName(domain, path);
        fs::create_directories(folder / "plain" / name.substr(0, 2));
        writeWholeFile(folder / "plain" / name.substr(0, 2) / name, "content");
    }
    writeManifestDatabase(folder / "plain/Manifest.db", records);
    fs::create_directories(folder / "to/HomeDomain");
    fs::create_directory(folder / "elsewhere");
    fs::create_directory_symlink(folder / "elsewhere", folder / "to/HomeDomain/link");
    const auto ran = runSalvor({"extract", at("plain"), "--to", at("to")});
    EXPECT_EQ(ran.status, 7);
    EXPECT_EQ(ran.out, "1 files written, 7 bytes; 7 refused by their names; 1 failed\n");
    EXPECT_TRUE(fs::is_empty(folder / "elsewhere"));
    EXPECT_EQ(readWholeFile(folder / "to/HomeDomain/fine"), "content");
    EXPECT_FALSE(fs::exists(folder / "out-of-it"));
}

TEST_F(EncryptedBackups, OfIos10_0AreRefusedWithTheReason) {
    MbdbRecord record;
    record.domain = "HomeDomain";
    writeManifestDatabase(folder / "locked/Manifest.db", {record});
    auto index = readWholeFile(folder / "locked/Manifest.db");
    index.replace(index.find("bplist00"), 8, "ABCDEFGH");
    writeWholeFile(folder / "locked/Manifest.db", index);
    // Then the manifest has no key for the index.
    auto manifest = readWholeFile(folder / "locked/Manifest.plist");
    manifest.replace(manifest.find("ManifestKey"), 11, "xanifestKex");
    writeWholeFile(folder / "locked/Manifest.plist", manifest);
    const auto ran = run({"scan"}, "right");
    EXPECT_EQ(ran.status, 3);
    EXPECT_THAT(ran.err, HasSubstr("as iOS 10.0 did alone"));
}

}  // namespace
}  // namespace salvor::cli
