#pragma once

#include <cstdint>
#include <stop_token>
#include <string>

#include "backup/extraction/WorkFolder.h"
#include "scan/ScanState.h"

namespace salvor {

enum class ExtractionResult {
    Complete,
    Cancelled,     ///< the lists hold what was read until then
    NoWorkFolder,  ///< the pictures could not be given a place; nothing was read
};

/// Turns the backup folder of a scan into its live lists: resolves the database names, sweeps the
/// pictures, reads the live rows of each requested category. Deleted rows are not its business.
/// Ends between files and between steps once `IsCancelFlag` is set.
class CategoryExtraction {
  public:
    /// Pictures are copied into `workFolder`, which outlives this object; null leaves them where
    /// they are. `cancelled` ends the statements that run.
    CategoryExtraction(ScanState& state, WorkFolder* workFolder, std::stop_token cancelled = {});

    /// Clears what an earlier scan left and resolves the database names.
    void prepare(std::int32_t dataType);
    /// Reads what `dataType` asks for: 0 everything, else the category with that code.
    ExtractionResult read(std::int32_t dataType);
    /// Why there is no work folder.
    const std::string& failure() const { return failure_; }

  private:
    ScanState& state_;
    WorkFolder* workFolder_;
    std::stop_token cancelled_;
    std::string failure_;
};

}  // namespace salvor
