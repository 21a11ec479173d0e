#include "util/Sha256.h"

#include <array>
#include <memory>
#include <openssl/evp.h>

#include "util/MappedFile.h"
#include "util/StringUtils.h"

namespace salvor {

std::optional<std::string> sha256OfFile(const std::filesystem::path& path,
                                        const std::stop_token& stop) {
    constexpr std::size_t kPiece = std::size_t{4} << 20;
    const auto file = MappedFile::open(path);
    const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(),
                                                                     EVP_MD_CTX_free);
    if (!file || !context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1)
        return std::nullopt;
    const Bytes bytes = file->bytes();
    for (std::size_t at = 0; at < bytes.size(); at += kPiece) {
        const Bytes piece = slice(bytes, at, kPiece);
        if (stop.stop_requested()) return std::nullopt;
        if (EVP_DigestUpdate(context.get(), piece.data(), piece.size()) != 1) return std::nullopt;
    }
    std::array<std::uint8_t, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (EVP_DigestFinal_ex(context.get(), digest.data(), &length) != 1) return std::nullopt;
    return StringUtils::NSDataToHex(Bytes(digest.data(), length));
}

}  // namespace salvor
