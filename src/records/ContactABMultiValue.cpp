#include "records/ContactABMultiValue.h"

#include "util/StringUtils.h"

namespace salvor {

bool ContactABMultiValue::IsEqual(const ContactABMultiValue& other) const {
    return RecordId == other.RecordId && Property == other.Property &&
           Identifier == other.Identifier && Label == other.Label &&
           StringUtils::sameText(value, other.value) && StringUtils::sameText(Guid, other.Guid);
}

}  // namespace salvor
