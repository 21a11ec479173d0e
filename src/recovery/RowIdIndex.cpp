#include "recovery/RowIdIndex.h"

namespace salvor {

bool RowIdIndex::contains(const List<baseRecoveryObject>& list, std::int64_t rowId) {
    follow(list);
    return rowIds_.contains(rowId);
}

void RowIdIndex::follow(const List<baseRecoveryObject>& list) {
    const bool sameList =
        indexed_ == 0 || (indexed_ <= list.size() && list.front().get() == first_ &&
                          list[indexed_ - 1].get() == last_);
    if (!sameList) {
        rowIds_.clear();
        indexed_ = 0;
    }
    if (indexed_ == list.size()) return;
    for (; indexed_ < list.size(); ++indexed_) {
        if (list[indexed_]) rowIds_.insert(list[indexed_]->RowId);
    }
    first_ = list.front().get();
    last_ = list.back().get();
}

}  // namespace salvor
