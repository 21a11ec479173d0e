#include "backup/keys/FileCipher.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <mutex>
#include <openssl/evp.h>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace salvor {
namespace {

constexpr std::size_t kBlock = 16;
constexpr std::size_t kKeyBytes = 32;
constexpr std::size_t kPiece = std::size_t{1} << 20;

FileCopy notWritten() {
    return {FileCopy::End::Unwritten, std::generic_category().message(errno)};
}

FileCopy notDecrypted() {
    return {FileCopy::End::Unreadable, "the cryptographic library refuses"};
}

bool writeAt(int file, Bytes bytes, std::size_t at) {
    while (!bytes.empty()) {
        const auto written = ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(at));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
        at += static_cast<std::size_t>(written);
    }
    return true;
}

/// Decrypts a file piece by piece on several threads: each piece needs but the block before it.
class Decryption {
  public:
    Decryption(Bytes content, Bytes key, std::size_t size, int target,
               const std::function<bool()>& cancelled)
        : content_(content), key_(key), size_(size), target_(target), cancelled_(cancelled) {}

    FileCopy run() {
        const std::size_t pieces = (content_.size() + kPiece - 1) / kPiece;
        const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
        std::vector<std::jthread> helpers;
        for (std::size_t i = 1; i < std::min(cores, pieces); ++i)
            helpers.emplace_back([this] { work(); });
        work();
        for (auto& helper : helpers) helper.join();
        return end_;
    }

  private:
    void work() {
        std::vector<std::uint8_t> plain(std::min(kPiece, content_.size()));
        for (;;) {
            const std::size_t at = next_.fetch_add(kPiece);
            if (at >= content_.size() || failed_) return;
            const Bytes piece = slice(content_, at, kPiece);
            const Bytes before = at == 0 ? Bytes() : content_.subspan(at - kBlock, kBlock);
            if (!FileCipher::decrypt(key_, before, piece, plain)) return fail(notDecrypted());
            const Bytes kept =
                slice(Bytes(plain).first(piece.size()), 0, size_ - std::min(at, size_));
            if (!writeAt(target_, kept, at)) return fail(notWritten());
            if (cancelled_ && cancelled_()) return fail({FileCopy::End::Cancelled, "cancelled"});
        }
    }
    void fail(FileCopy end) {
        const std::lock_guard lock(mutex_);
        if (!failed_.exchange(true)) end_ = std::move(end);
    }

    Bytes content_;
    Bytes key_;
    std::size_t size_;
    int target_;
    const std::function<bool()>& cancelled_;
    std::atomic<std::size_t> next_{0};
    std::atomic<bool> failed_{false};
    std::mutex mutex_;
    FileCopy end_;
};

}  // namespace

bool FileCipher::decrypt(Bytes key, Bytes blockBefore, Bytes piece, std::span<std::uint8_t> out) {
    constexpr std::array<std::uint8_t, kBlock> kZeros{};
    if (key.size() != kKeyBytes || piece.size() % kBlock != 0 || out.size() < piece.size() ||
        piece.size() > kPiece)
        return false;
    const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> context(EVP_CIPHER_CTX_new(),
                                                                             EVP_CIPHER_CTX_free);
    const auto* vector = blockBefore.size() == kBlock ? blockBefore.data() : kZeros.data();
    int size = 0;
    return context != nullptr &&
           EVP_DecryptInit_ex(context.get(), EVP_aes_256_cbc(), nullptr, key.data(), vector) == 1 &&
           EVP_CIPHER_CTX_set_padding(context.get(), 0) == 1 &&
           EVP_DecryptUpdate(context.get(), out.data(), &size, piece.data(),
                             static_cast<int>(piece.size())) == 1 &&
           size == static_cast<int>(piece.size());
}

std::size_t FileCipher::wholeBlocks() const {
    return content_.size() / kBlock * kBlock;
}

std::optional<std::size_t> FileCipher::padding() const {
    const std::size_t whole = wholeBlocks();
    if (whole == 0) return 0;
    std::array<std::uint8_t, kBlock> last{};
    const Bytes before = whole == kBlock ? Bytes() : content_.subspan(whole - 2 * kBlock, kBlock);
    if (!decrypt(key_, before, content_.subspan(whole - kBlock, kBlock), last)) return std::nullopt;
    const std::size_t count = last.back();
    if (count == 0 || count > kBlock) return 0;
    const auto filler = Bytes(last).last(count);
    const bool sound = std::all_of(filler.begin(), filler.end(),
                                   [count](std::uint8_t byte) { return byte == count; });
    return sound ? count : 0;
}

std::optional<std::uint64_t> FileCipher::size() const {
    const auto filler = padding();
    return filler ? std::optional<std::uint64_t>(wholeBlocks() - *filler) : std::nullopt;
}

bool FileCipher::isSound() const {
    return content_.empty() || (wholeBlocks() == content_.size() && padding().value_or(0) > 0);
}

std::size_t FileCipher::readHead(std::span<std::uint8_t> head) const {
    const std::uint64_t all = size().value_or(0);
    const std::size_t wanted = std::min<std::uint64_t>(head.size(), all);
    const Bytes piece =
        slice(content_, 0, std::min((wanted + kBlock - 1) / kBlock * kBlock, kPiece));
    std::vector<std::uint8_t> plain(piece.size());
    if (wanted == 0 || wanted > piece.size() || !decrypt(key_, {}, piece, plain)) return 0;
    std::copy_n(plain.begin(), wanted, head.begin());
    return wanted;
}

FileCopy FileCipher::decryptTo(const std::filesystem::path& target,
                               const FileCopyOptions& options) const {
    const auto length = size();
    if (!length) return notDecrypted();
    const int file = ::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0) return notWritten();
    auto end =
        Decryption(content_.first(wholeBlocks()), key_, *length, file, options.cancelled).run();
    if (options.modified) {
        const timespec times[] = {{*options.modified, 0}, {*options.modified, 0}};
        ::futimens(file, times);
    }
    if (::close(file) != 0 && end) end = notWritten();
    if (!end) ::unlink(target.c_str());
    return end;
}

}  // namespace salvor
