#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace salvor {

/// An unchangeable UTF-8 text that may be absent. An absent text is not an empty one: the two
/// compare unequal and are written differently (null and "" in JSON). It is used like an optional
/// whose value is a `std::string_view` that lives as long as some copy of the text does. Eight
/// bytes, whatever it holds: copies, and most short texts made one soon after the other, share one
/// block. Distinct objects may be used by different threads. `std::length_error` from 4 GiB on.
class Text {
  public:
    Text() noexcept = default;
    Text(std::nullopt_t) noexcept {}
    Text(std::nullptr_t) = delete;
    Text(std::string_view text) : block_(blockOf(text)) {}
    Text(const std::string& text) : Text(std::string_view(text)) {}
    Text(const char* text) : Text(std::string_view(text)) {}
    Text(const Text& other) noexcept : block_(other.block_) { hold(); }
    Text(Text&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
    Text& operator=(Text other) noexcept {
        std::swap(block_, other.block_);
        return *this;
    }
    ~Text() { release(); }

    bool has_value() const noexcept { return block_ != nullptr; }
    explicit operator bool() const noexcept { return has_value(); }
    void reset() noexcept { *this = Text(); }

    // A view into a temporary text would outlive it, so a temporary gives a string of its own.
    std::string_view operator*() const& noexcept { return block_->text(); }
    std::string operator*() && { return std::string(block_->text()); }
    std::string_view value() const&;  ///< `std::bad_optional_access` when absent
    std::string value_or(std::string_view other) const {
        return std::string(has_value() ? block_->text() : other);
    }
    /// "" when absent.
    std::string_view view() const& noexcept {
        return has_value() ? block_->text() : std::string_view();
    }
    std::string_view view() && = delete;

    class Arrow {
      public:
        explicit Arrow(std::string_view text) : text_(text) {}
        const std::string_view* operator->() const noexcept { return &text_; }

      private:
        std::string_view text_;
    };
    Arrow operator->() const noexcept { return Arrow(block_->text()); }

    /// An absent text comes before all others.
    friend bool operator==(const Text& a, const Text& b) noexcept {
        if (a.block_ == b.block_) return true;
        return a && b && *a == *b;
    }
    friend std::strong_ordering operator<=>(const Text& a, const Text& b) noexcept {
        return a && b ? *a <=> *b : a.has_value() <=> b.has_value();
    }
    friend bool operator==(const Text& a, std::nullopt_t) noexcept { return !a; }
    template <class Other>
    requires std::convertible_to<const Other&, std::string_view>
    friend bool operator==(const Text& a, const Other& b) noexcept {
        return a && *a == std::string_view(b);
    }

  private:
    /// The head of one allocation; its bytes stand behind it.
    struct Block {
        std::atomic<std::uint32_t> holders;
        std::uint32_t size;

        std::string_view text() const noexcept {
            return {reinterpret_cast<const char*>(this + 1), size};
        }
    };
    struct Recent;
    /// From this count on, a block stays for good and is no longer counted.
    static constexpr std::uint32_t kForGood = std::uint32_t{1} << 31;

    static Block* blockOf(std::string_view text);
    static Block* newBlock(std::string_view text);
    static void free(Block* block) noexcept;

    void hold() const noexcept {
        if (block_ != nullptr && block_->holders.load(std::memory_order_relaxed) < kForGood)
            block_->holders.fetch_add(1, std::memory_order_relaxed);
    }
    void release() const noexcept {
        if (block_ != nullptr && block_->holders.load(std::memory_order_relaxed) < kForGood &&
            block_->holders.fetch_sub(1, std::memory_order_acq_rel) == 1)
            free(block_);
    }

    Block* block_ = nullptr;
};

/// The text in quotes, or "absent" without.
std::ostream& operator<<(std::ostream& out, const Text& text);

}  // namespace salvor

template <>
struct std::hash<salvor::Text> {
    // Not noexcept: so the unordered containers of libstdc++ keep the hash of each text.
    std::size_t operator()(const salvor::Text& text) const {
        return std::hash<std::string_view>()(text.view());
    }
};
