#pragma once

#include <cstdint>

#include "recovery/AbstractSqLiteRecovery.h"

namespace salvor {

/// The carver's base for tables of small rows: searches every page of the b-tree passes whole,
/// whatever its type, so live rows are carved as well. Telling them apart is the subclass's
/// business.
class AbstractSQLiteRecoveryFullSearch : public AbstractSqLiteRecovery {
  public:
    explicit AbstractSQLiteRecoveryFullSearch(ScanState& state, std::stop_token cancelled = {})
        : AbstractSqLiteRecovery(state, std::move(cancelled), PageSearch::Whole) {}

  protected:
    /// The common data-start rule.
    std::int32_t verifyDataPosition(Bytes text) override;

    std::int32_t _maxMessageRowId = 0;  ///< largest row id of the live table, set by the subclass
};

}  // namespace salvor
