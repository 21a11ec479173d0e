#pragma once

#include <mutex>
#include <stop_token>

namespace salvor {

/// The cancel of a scan, backup or device reading that runs or comes next. Once it has been heeded,
/// `renew` makes one for what comes after. All from any thread.
class CancelSource {
  public:
    std::stop_token token() const {
        const std::lock_guard lock(mutex_);
        return source_.get_token();
    }
    bool requested() const { return token().stop_requested(); }
    void request() {
        std::stop_source source;
        {
            const std::lock_guard lock(mutex_);
            source = source_;
        }
        source.request_stop();  // what it calls may ask for the token
    }
    void renew() {
        const std::lock_guard lock(mutex_);
        source_ = std::stop_source();
    }

  private:
    mutable std::mutex mutex_;
    std::stop_source source_;
};

}  // namespace salvor
