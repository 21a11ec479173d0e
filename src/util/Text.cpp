#include "util/Text.h"

#include <array>
#include <cstring>
#include <limits>
#include <new>
#include <ostream>
#include <stdexcept>

namespace salvor {
namespace {

constexpr std::size_t kRemembered = 1024;   // texts of one thread
constexpr std::size_t kLongestShared = 32;  // longer ones (GUIDs, messages) seldom come again

thread_local bool threadEnds = false;

}  // namespace

/// The short texts that a thread made last, each in the place that its hash names.
struct Text::Recent {
    std::array<Text, kRemembered> texts;
    ~Recent() { threadEnds = true; }
};

Text::Block* Text::blockOf(std::string_view text) {
    static constinit Block empty{{kForGood + kForGood / 2}, 0};
    if (text.empty()) return &empty;
    if (text.size() > kLongestShared || threadEnds) return newBlock(text);
    static thread_local constinit Recent recent;
    Text& place = recent.texts[std::hash<std::string_view>()(text) % kRemembered];
    if (!place || *place != text) {
        Text made;
        made.block_ = newBlock(text);
        place = std::move(made);
    }
    place.hold();
    return place.block_;
}

Text::Block* Text::newBlock(std::string_view text) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("a text of 4 GiB or more");
    void* memory = ::operator new(sizeof(Block) + text.size());
    auto* block = new (memory) Block{{1}, static_cast<std::uint32_t>(text.size())};
    std::memcpy(static_cast<char*>(memory) + sizeof(Block), text.data(), text.size());
    return block;
}

void Text::free(Block* block) noexcept {
    ::operator delete(block);
}

std::string_view Text::value() const& {
    if (!has_value()) throw std::bad_optional_access();
    return block_->text();
}

std::ostream& operator<<(std::ostream& out, const Text& text) {
    return text ? out << '"' << *text << '"' : out << "absent";
}

}  // namespace salvor
