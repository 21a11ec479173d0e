#include "util/StoredName.h"

#include "util/Sha1.h"
#include "util/Utf8.h"

namespace salvor {

std::string storedName(std::string_view location) {
    return Sha1::hexDigest(location.substr(0, utf16Length(location)));
}

std::string storedName(std::string_view domain, std::string_view path) {
    return storedName(std::string(domain).append("-").append(path));
}

}  // namespace salvor
