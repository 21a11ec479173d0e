#include "recovery/signatures/SignatureReaders.h"

#include <gmock/gmock.h>

#include "tests/support/Signatures.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What a file of one signature, from its second line on, is told of.
std::vector<std::string> told(const std::string& signature) {
    const TempFolder folder;
    writeWholeFile(folder / "file", "<signatures>\n" + signature + "</signatures>");
    std::vector<std::string> lines;
    for (const auto& one : unreadSignatures(SignatureListing::read(folder / "file")))
        lines.push_back(std::to_string(one.line) + ": " + one.text);
    return lines;
}

TEST(SignatureReaders, TellWhatNoCarverReads) {
    const std::string patterns =
        "<pattern>\n<attributemapping name='guid' column='3'/>\n"
        "<attributemapping name='foo' column='4'/></pattern>\n"
        "<pattern><attributemapping name='foo' column='4'/>\n"
        "<attributemapping name='flags' column='5'/>\n"
        "<attributemapping name='Guid' column='6'/></pattern></signature>\n";
    // "flags" is read by the carver of another layout of the table alone; case counts.
    EXPECT_THAT(told("<signature name='HomeDomain' database='sms.db' table='MESSAGE'>" + patterns),
                ElementsAre("4: table MESSAGE: no carver reads the mapping \"foo\"",
                            "7: table MESSAGE: no carver reads the mapping \"Guid\""));
    EXPECT_THAT(told("<signature name='HomeDomain' database='sms.db' table='message'>" + patterns),
                ElementsAre("2: table message: no carver reads it"));
    EXPECT_THAT(told("<signature name='HomeDomain' database='sms.db' table='MESSAGE'>\n"
                     "</signature>"),
                IsEmpty());
}

TEST(SignatureReaders, AndTheShippedFileFitEachOther) {
    EXPECT_THAT(unreadSignatures(SignatureListing::read(SALVOR_SOURCE_DIR
                                                        "/src/resources/RecoverySignatures.xml")),
                IsEmpty());
    const auto shipped = shippedSignatures();
    for (const auto& [carver, key, names] : signatureReaders()) {
        EXPECT_TRUE(shipped->Find(std::string(key.domain), std::string(key.database),
                                  std::string(key.table)))
            << carver;
        EXPECT_FALSE(names.empty()) << carver;
    }
}

}  // namespace
}  // namespace salvor
