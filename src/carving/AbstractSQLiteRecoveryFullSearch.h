#pragma once

#include <cstdint>

#include "carving/AbstractSqLiteRecovery.h"

namespace salvor {

/// The engine for tables of small rows: searches every page of the b-tree passes whole, whatever
/// its type, so live rows are carved as well. Telling them apart is the subclass's business.
class AbstractSQLiteRecoveryFullSearch : public AbstractSqLiteRecovery {
  public:
    using AbstractSqLiteRecovery::AbstractSqLiteRecovery;

  protected:
    /// A read past the end of the page ends this page alone.
    void ProcessSQLitePage(Bytes page) override;
    /// The common data-start rule.
    std::int32_t verifyDataPosition(Bytes text) override;

    std::int32_t _maxMessageRowId = 0;  ///< largest row id of the live table, set by the subclass
};

}  // namespace salvor
