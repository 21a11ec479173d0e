#include "carving/TableCarver.h"

#include "carving/CarvingEngine.h"

namespace salvor {

void carveTable(const SqLiteTableSignatures& signatures, const TableCarveOptions& options,
                const std::filesystem::path& file, std::stop_token cancelled,
                const std::function<void(const CarvedRow&)>& found) {
    const auto signature = signatures.Find(options.domain, options.database, options.table);
    const auto opened = CarvingEngine::open(file);
    if (!signature || !opened) return;
    const TablePatterns patterns = options.version
                                       ? signature->FindPatternsByVersion(*options.version)
                                       : signature->TablePatterns;
    RowCollector rows(found, options.rowIds);
    CarvingEngine engine(rows, options.fullSearch ? PageSearch::Whole : PageSearch::Unused,
                         std::move(cancelled));
    engine.carve(opened->bytes(), patterns, {options.callList, {}});
}

}  // namespace salvor
