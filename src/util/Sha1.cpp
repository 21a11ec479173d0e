#include "util/Sha1.h"

#include <array>
#include <openssl/evp.h>

#include "util/StringUtils.h"

namespace salvor {

std::string Sha1::hexDigest(Bytes data) {
    std::array<std::uint8_t, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (EVP_Digest(data.data(), data.size(), digest.data(), &length, EVP_sha1(), nullptr) != 1) {
        return {};
    }
    return StringUtils::NSDataToHex(Bytes(digest.data(), length));
}

std::string Sha1::hexDigest(std::string_view text) {
    return hexDigest(Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

}  // namespace salvor
