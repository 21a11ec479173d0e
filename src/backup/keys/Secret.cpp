#include "backup/keys/Secret.h"

#include <algorithm>
#include <mutex>
#include <openssl/crypto.h>
#include <sys/prctl.h>
#include <utility>

namespace salvor {
namespace {

/// Keeps the process from being dumped while secrets live. Dumps that go to a program heed no
/// limit of their size, so only this flag holds them back.
class DumpBan {
  public:
    void enter() {
        const std::lock_guard lock(mutex_);
        if (holders_++ > 0) return;
        before_ = ::prctl(PR_GET_DUMPABLE);
        ::prctl(PR_SET_DUMPABLE, 0);
    }
    void leave() {
        const std::lock_guard lock(mutex_);
        if (--holders_ == 0 && before_ == 1) ::prctl(PR_SET_DUMPABLE, 1);
    }

  private:
    std::mutex mutex_;
    std::size_t holders_ = 0;
    int before_ = 0;
};

DumpBan& dumpBan() {
    static DumpBan ban;
    return ban;
}

}  // namespace

Secret::Secret(std::size_t size) : bytes_(std::make_unique<std::uint8_t[]>(size)), size_(size) {
    dumpBan().enter();
}

Secret::Secret(Bytes bytes) : Secret(bytes.size()) {
    std::copy(bytes.begin(), bytes.end(), bytes_.get());
}

Secret Secret::take(std::string& text) {
    Secret secret(text.size());
    std::copy(text.begin(), text.end(), secret.bytes_.get());
    OPENSSL_cleanse(text.data(), text.size());
    text.clear();
    return secret;
}

Secret::Secret(Secret&& other) noexcept
    : bytes_(std::move(other.bytes_)), size_(std::exchange(other.size_, 0)) {}

Secret& Secret::operator=(Secret&& other) noexcept {
    if (this == &other) return *this;
    wipe();
    bytes_ = std::move(other.bytes_);
    size_ = std::exchange(other.size_, 0);
    return *this;
}

Secret::~Secret() {
    wipe();
}

void Secret::wipe() {
    if (bytes_ == nullptr) return;
    OPENSSL_cleanse(bytes_.get(), size_);
    bytes_.reset();
    size_ = 0;
    dumpBan().leave();
}

}  // namespace salvor
