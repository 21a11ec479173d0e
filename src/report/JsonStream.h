#pragma once

#include <cstddef>
#include <fmt/format.h>
#include <ostream>
#include <stop_token>
#include <string>
#include <string_view>
#include <type_traits>

namespace salvor::json {

/// Writes the pieces of one JSON text to a stream through a buffer of 64 KiB. Texts are UTF-8;
/// bytes that are not become U+FFFD, NaN and infinities null; characters that a terminal would obey
/// are escaped. Once the stream has failed or `stop`
/// was asked for, `ended` is true and nothing more is written. Not thread-safe.
class JsonStream {
  public:
    explicit JsonStream(std::ostream& out, std::stop_token stop = {})
        : out_(out), stop_(std::move(stop)) {}
    JsonStream(const JsonStream&) = delete;
    JsonStream& operator=(const JsonStream&) = delete;
    ~JsonStream() { flush(); }

    void raw(std::string_view text) {
        buffer_ += text;
        if (buffer_.size() >= kBuffer) flush();
    }
    void text(std::string_view value);
    template <class Number>
    requires std::is_arithmetic_v<Number>
    void number(Number value) {
        if constexpr (std::is_same_v<Number, bool>)
            raw(value ? "true" : "false");
        else if constexpr (std::is_floating_point_v<Number>)
            real(value);
        else
            raw(fmt::format_int(value).c_str());
    }
    /// "," unless `first`, which is false from then on, and the quoted name of a member.
    void key(const char* name, bool& first);

    void flush();
    bool ended() const { return ended_; }

  private:
    static constexpr std::size_t kBuffer = 65536;

    void real(double value);

    std::ostream& out_;
    std::stop_token stop_;
    std::string buffer_;
    bool ended_ = false;
};

}  // namespace salvor::json
