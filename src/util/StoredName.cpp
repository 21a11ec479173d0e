#include "util/StoredName.h"

#include "util/Sha1.h"
#include "util/Utf8.h"

namespace salvor {

std::string storedName(std::string_view location) {
    return Sha1::hexDigest(location.substr(0, utf16Length(location)));
}

}  // namespace salvor
