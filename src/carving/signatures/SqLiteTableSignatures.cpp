#include "carving/signatures/SqLiteTableSignatures.h"

#include <algorithm>

#include "carving/signatures/SqLiteTableSignaturesParser.h"
#include "util/MappedFile.h"

namespace salvor {

TablePatterns SQLiteSignature::FindPatternsByVersion(const std::string& version) const {
    salvor::TablePatterns supported;
    std::copy_if(
        TablePatterns.begin(), TablePatterns.end(), std::back_inserter(supported),
        [&version](const auto& pattern) { return pattern->CheckIfVersionSupported(version); });
    return supported;
}

std::shared_ptr<TablePattern> SQLiteSignature::FindByNumberOfColumns() const {
    return std::make_shared<TablePattern>();
}

std::string SqLiteTableSignatures::loadSignatures(const std::filesystem::path& path) {
    std::string fault;
    if (!connected() || !LoadRemoteSignaturesFile()) fault = LoadLocalSignaturesFile(path);
    loaded = true;
    return fault;
}

std::string SqLiteTableSignatures::LoadLocalSignaturesFile(const std::filesystem::path& path) {
    const auto file = MappedFile::open(path);
    if (!file) return "cannot be read";
    SqLiteTableSignaturesParser parser(file->bytes());
    parser.setSqLiteTableSignatures(this);
    parser.parseTableSignatures();
    return parser.fault().empty() && tableSignatures.empty() ? kNoSignatures : parser.fault();
}

std::shared_ptr<SQLiteSignature> SqLiteTableSignatures::Find(const std::string& domain,
                                                             const std::string& database,
                                                             const std::string& table) const {
    const auto found =
        std::find_if(tableSignatures.begin(), tableSignatures.end(), [&](const auto& signature) {
            return signature->Name == domain && signature->Database == database &&
                   signature->Table == table;
        });
    return found == tableSignatures.end() ? nullptr : *found;
}

}  // namespace salvor
