#include "fuzz/ShippedSignatures.h"

#include <filesystem>

#include "fuzz/Target.h"
#include "util/MappedFile.h"

namespace salvor::fuzz {
namespace {

const std::filesystem::path kFile = SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml";

std::shared_ptr<SqLiteTableSignatures> load() {
    auto signatures = std::make_shared<SqLiteTableSignatures>();
    const std::string fault = signatures->loadSignatures(kFile);
    expect(fault.empty(), fault);
    return signatures;
}

std::vector<reference::LiteralSignature> loadLiterally() {
    const auto file = MappedFile::open(kFile);
    expect(file.has_value(), kFile.string() + " cannot be read");
    return reference::parseSignatures(std::string(asText(file->bytes())));
}

}  // namespace

std::shared_ptr<SqLiteTableSignatures> shippedSignatures() {
    static const auto signatures = load();
    return signatures;
}

const std::vector<reference::LiteralSignature>& literalSignatures() {
    static const auto signatures = loadLiterally();
    return signatures;
}

}  // namespace salvor::fuzz
