#include "carving/TableCarver.h"

#include <algorithm>
#include <fmt/format.h>
#include <vector>

#include "carving/CarvingEngine.h"
#include "carving/format/SQLiteHeader.h"
#include "util/StringUtils.h"

namespace salvor {
namespace {

using Names = std::vector<std::string>;

void addOnce(Names& names, const std::string& name) {
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
}

std::string listOf(const Names& names) {
    constexpr std::size_t kMost = 40;
    const auto shown = std::min(names.size(), kMost);
    std::string list = fmt::format("{}", fmt::join(names.data(), names.data() + shown, ", "));
    if (shown < names.size()) list += fmt::format(" and {} more", names.size() - shown);
    return list;
}

/// Makes `name` the one of `known` that it means.
std::string spell(std::string& name, const Names& known, const char* what) {
    if (std::find(known.begin(), known.end(), name) != known.end()) return "";
    const auto wanted = StringUtils::lowerCase(name);
    const auto found = std::find_if(known.begin(), known.end(), [&](const auto& one) {
        return StringUtils::lowerCase(one) == wanted;
    });
    if (found == known.end())
        return known.empty()
                   ? fmt::format("there is no {} \"{}\", nor any other", what, name)
                   : fmt::format("there is no {} \"{}\"; there is {}", what, name, listOf(known));
    name = *found;
    return "";
}

// What the engine passes over in silence.
std::string whyNotSearched(const std::filesystem::path& path) {
    const auto file = MappedFile::open(path);
    if (!file) return "cannot be mapped into memory";
    if (file->bytes().empty()) return "is empty";
    const auto header = SQLiteHeader::fromBytes(file->bytes());
    if (!header) return fmt::format("has {} bytes, too few for a database", file->bytes().size());
    return header->PageSize == 0 ? "names no page size, so it is no SQLite database" : "";
}

}  // namespace

std::string spellAsSignatures(const SqLiteTableSignatures& signatures, TableCarveOptions& options) {
    Names domains, databases, tables;
    for (const auto& one : signatures.tableSignatures) addOnce(domains, one->Name);
    if (auto fault = spell(options.domain, domains, "domain"); !fault.empty()) return fault;
    for (const auto& one : signatures.tableSignatures)
        if (one->Name == options.domain) addOnce(databases, one->Database);
    if (auto fault = spell(options.database, databases, "database"); !fault.empty()) return fault;
    for (const auto& one : signatures.tableSignatures)
        if (one->Name == options.domain && one->Database == options.database)
            addOnce(tables, one->Table);
    if (auto fault = spell(options.table, tables, "table"); !fault.empty()) return fault;
    if (!options.version) return "";
    Names versions;
    const auto signature = signatures.Find(options.domain, options.database, options.table);
    for (const auto& pattern : signature->TablePatterns)
        for (const auto& version : pattern->SupportedVersions) addOnce(versions, version);
    return spell(*options.version, versions, "version");
}

TableCarving carveTable(const SqLiteTableSignatures& signatures, const TableCarveOptions& options,
                        const std::filesystem::path& file, std::stop_token cancelled,
                        const std::function<void(const CarvedRow&)>& found) {
    TableCarving carving{whyNotSearched(file)};
    const auto signature = signatures.Find(options.domain, options.database, options.table);
    const auto opened = CarvingEngine::open(file);
    if (!carving.fault.empty() || !signature || !opened) return carving;
    carving.isDatabase = SQLiteHeader::beginsLikeDatabase(opened->bytes());
    const TablePatterns patterns = options.version
                                       ? signature->FindPatternsByVersion(*options.version)
                                       : signature->TablePatterns;
    RowCollector rows(found, options.rowIds);
    CarvingEngine engine(rows, options.fullSearch ? PageSearch::Whole : PageSearch::Unused,
                         std::move(cancelled));
    engine.carve(opened->bytes(), patterns, {options.callList, {}});
    return carving;
}

}  // namespace salvor
