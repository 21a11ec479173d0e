// How fast files of an encrypted backup are decrypted, on one core and on all, beside the library's
// own encryption of 16 KB blocks; and what the derivation of a key takes beside the library's own.

#include <array>
#include <chrono>
#include <ctime>
#include <fmt/format.h>
#include <memory>
#include <openssl/evp.h>
#include <string>
#include <thread>
#include <vector>

#include "backup/keys/FileCipher.h"
#include "backup/keys/KeyDerivation.h"
#include "tests/support/TempFolder.h"

namespace salvor {
namespace {

constexpr std::size_t kFile = std::size_t{512} << 20;
constexpr std::size_t kPiece = std::size_t{16} << 10;

/// Seconds of processor time that a call takes.
template <class Call>
double cpuSeconds(Call&& call) {
    const auto before = std::clock();
    call();
    return static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
}

double perSecond(std::size_t bytes, double seconds) {
    return static_cast<double>(bytes) / seconds / 1e6;
}

void encryptBlocks(std::size_t bytes) {
    std::vector<std::uint8_t> in(kPiece), out(kPiece + 16);
    const std::array<std::uint8_t, 32> key{};
    const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> context(EVP_CIPHER_CTX_new(),
                                                                             EVP_CIPHER_CTX_free);
    EVP_EncryptInit_ex(context.get(), EVP_aes_256_cbc(), nullptr, key.data(), key.data());
    int size = 0;
    for (std::size_t done = 0; done < bytes; done += kPiece)
        EVP_EncryptUpdate(context.get(), out.data(), &size, in.data(), static_cast<int>(kPiece));
}

void measure() {
    const TempFolder folder;
    const std::vector<std::uint8_t> content(kFile);
    const std::array<std::uint8_t, 32> key{};
    const double library = perSecond(kFile, cpuSeconds([] { encryptBlocks(kFile); }));
    const auto begun = std::chrono::steady_clock::now();
    std::string failure;
    const double decryption = perSecond(
        kFile,
        cpuSeconds([&] { failure = FileCipher(content, key).decryptTo(folder / "x").cause; }));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begun;
    fmt::print("{}encryption of 16 KB blocks {:.0f} MB/s of a core\n", failure, library);
    fmt::print("decryption of a file       {:.0f} MB/s of a core, {:.2f} of that\n", decryption,
               decryption / library);
    fmt::print("                           {:.0f} MB/s on {} cores\n",
               perSecond(kFile, took.count()), std::thread::hardware_concurrency());

    constexpr std::uint32_t kRounds = 2'000'000;
    const std::array<std::uint8_t, 20> salt{};
    std::array<std::uint8_t, 32> out{};
    const double own = cpuSeconds([&] {
        pbkdf2("SHA256", salt, salt, kRounds, out.size(), [](std::uint32_t) { return true; });
    });
    const double theirs = cpuSeconds([&] {
        PKCS5_PBKDF2_HMAC("12345678901234567890", 20, salt.data(), 20, kRounds, EVP_sha256(), 32,
                          out.data());
    });
    fmt::print("derivation, 10 million rounds {:.1f} s, by the library's own call {:.1f} s\n",
               own * 5, theirs * 5);
}

}  // namespace
}  // namespace salvor

int main() {
    salvor::measure();
}
