#pragma once

#include "records/Field.h"
#include "util/Text.h"

namespace salvor {

/// One member of a group conversation of iOS 4 and 5.
struct GroupMember {
    salvor::Text Address;
    salvor::Text Country;

    static constexpr auto fields() {
        return std::make_tuple(field("Address", &GroupMember::Address),
                               field("Country", &GroupMember::Country));
    }
};

}  // namespace salvor
