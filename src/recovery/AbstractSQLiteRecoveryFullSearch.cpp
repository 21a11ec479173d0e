#include "recovery/AbstractSQLiteRecoveryFullSearch.h"

#include "carving/DataPosition.h"

namespace salvor {

std::int32_t AbstractSQLiteRecoveryFullSearch::verifyDataPosition(Bytes text) {
    return standardDataPosition(_field, text);
}

}  // namespace salvor
