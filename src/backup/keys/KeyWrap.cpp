#include "backup/keys/KeyWrap.h"

#include <algorithm>
#include <memory>
#include <openssl/evp.h>

namespace salvor {

std::optional<Secret> unwrapKey(Bytes wrapping, Bytes wrapped) {
    constexpr std::size_t kWrappingBytes = 32;
    constexpr std::size_t kLeast = 24;
    constexpr std::size_t kMost = 72;
    if (wrapping.size() != kWrappingBytes || wrapped.size() < kLeast || wrapped.size() > kMost ||
        wrapped.size() % 8 != 0)
        return std::nullopt;
    const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> context(EVP_CIPHER_CTX_new(),
                                                                             EVP_CIPHER_CTX_free);
    if (context == nullptr) return std::nullopt;
    EVP_CIPHER_CTX_set_flags(context.get(), EVP_CIPHER_CTX_FLAG_WRAP_ALLOW);
    Secret room(wrapped.size());
    int size = 0;
    if (EVP_DecryptInit_ex(context.get(), EVP_aes_256_wrap(), nullptr, wrapping.data(), nullptr) !=
            1 ||
        EVP_DecryptUpdate(context.get(), room.writable().data(), &size, wrapped.data(),
                          static_cast<int>(wrapped.size())) != 1 ||
        size != static_cast<int>(wrapped.size()) - 8)
        return std::nullopt;
    return Secret(room.bytes().first(static_cast<std::size_t>(size)));
}

}  // namespace salvor
