#pragma once

#include "records/Field.h"
#include "util/Text.h"

namespace salvor {

/// One member of a group conversation of iOS 4 and 5.
struct GroupMember {
    salvor::Text Address;
    salvor::Text Country;

    template <class Self = GroupMember>
    static constexpr auto fields() {
        return std::make_tuple(field("Address", &Self::Address), field("Country", &Self::Country));
    }
};

}  // namespace salvor
