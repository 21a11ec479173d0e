#include "carving/AbstractSQLiteRecoveryFullSearch.h"

#include "carving/DataPosition.h"

namespace salvor {

void AbstractSQLiteRecoveryFullSearch::ProcessSQLitePage(Bytes page) {
    space_ = CarvedSpace::Page;
    ParseHeaderAndData(page, 0);
}

std::int32_t AbstractSQLiteRecoveryFullSearch::verifyDataPosition(Bytes text) {
    return standardDataPosition(_field, text);
}

}  // namespace salvor
