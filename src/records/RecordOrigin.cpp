#include "records/RecordOrigin.h"

namespace salvor {

const char* toString(CarvedSpace space) {
    switch (space) {
        case CarvedSpace::Gap:
            return "gap";
        case CarvedSpace::Freeblock:
            return "freeblock";
        case CarvedSpace::FreeList:
            return "free-list";
        case CarvedSpace::AfterRoot:
            return "after-root";
        case CarvedSpace::Page:
            return "page";
        case CarvedSpace::None:
            break;
    }
    return "";
}

}  // namespace salvor
