#include "tools/sample/Digest.h"

#include <array>
#include <fstream>
#include <openssl/evp.h>
#include <stdexcept>

namespace salvor {

std::string sampleDigestBytes(std::string_view bytes) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha1(), nullptr) != 1) {
        throw std::runtime_error("SHA-1 is not available");
    }
    return {digest.begin(), digest.begin() + length};
}

std::string sampleDigest(std::string_view bytes) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (char c : sampleDigestBytes(bytes)) {
        const auto byte = static_cast<unsigned char>(c);
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    return text;
}

std::string sampleStoredName(std::string_view domain, std::string_view path) {
    return sampleDigest(std::string(domain) + "-" + std::string(path));
}

std::string readWholeFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in) throw std::runtime_error("cannot read " + path.string());
    std::string bytes(static_cast<std::size_t>(in.tellg()), '\0');
    in.seekg(0);
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!in) throw std::runtime_error("cannot read " + path.string());
    return bytes;
}

void writeWholeFile(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace salvor
