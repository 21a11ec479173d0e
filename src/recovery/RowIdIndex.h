#pragma once

#include <cstdint>
#include <unordered_set>

#include "records/List.h"
#include "records/baseRecoveryObject.h"

namespace salvor {

/// The row ids on a list of records that others fill. Follows the list as it grows and starts
/// anew when it was replaced or cut.
class RowIdIndex {
  public:
    bool contains(const List<baseRecoveryObject>& list, std::int64_t rowId);

  private:
    void follow(const List<baseRecoveryObject>& list);

    std::unordered_set<std::int64_t> rowIds_;
    std::size_t indexed_ = 0;
    // Compared only, never followed.
    const baseRecoveryObject* first_ = nullptr;
    const baseRecoveryObject* last_ = nullptr;
};

}  // namespace salvor
