#include <algorithm>
#include <array>
#include <string_view>

#include "util/PropertyListGuard.h"

namespace salvor {
namespace {

constexpr std::string_view kSpace = " \t\r\n";

// Walks the text from tag to tag and copies what the property-list library shall see.
class XmlFilter {
  public:
    explicit XmlFilter(std::string_view xml) : rest_(xml) {
        while (rest_.starts_with("\xEF\xBB\xBF")) rest_.remove_prefix(3);
    }

    std::optional<std::string> run() {
        out_.reserve(rest_.size());
        while (!rest_.empty()) {
            text(std::min(rest_.find('<'), rest_.size()));
            if (!rest_.empty() && !markup()) return std::nullopt;
        }
        return std::move(out_);
    }

  private:
    bool markup() {
        if (rest_.starts_with("<!--")) return skipPast("-->", 4);
        if (rest_.starts_with("<?")) return skipPast("?>", 2);
        if (rest_.starts_with("<![CDATA[")) return copyPast("]]>");
        if (rest_.starts_with("<!DOCTYPE")) return documentType();
        return tag();
    }

    bool documentType() {
        const auto end = rest_.find('>');
        // An internal subset has no place in a property list.
        if (end == std::string_view::npos || rest_.substr(0, end).find('[') != rest_.npos) {
            return false;
        }
        rest_.remove_prefix(end + 1);
        return true;
    }

    bool tag() {
        const auto end = rest_.find('>');
        if (end == std::string_view::npos) return false;
        std::string_view inner = rest_.substr(1, end - 1);
        const bool closes = inner.starts_with('/');
        const bool selfClosed = inner.ends_with('/');
        if (closes) inner.remove_prefix(1);
        if (selfClosed && !inner.empty()) inner.remove_suffix(1);
        const auto nameEnd = inner.find_first_of(kSpace);
        const auto name = inner.substr(0, nameEnd);
        const bool bare = nameEnd == std::string_view::npos ||
                          inner.find_first_not_of(kSpace, nameEnd) == std::string_view::npos;
        if (name.empty() || inner.find('<') != inner.npos || (!bare && name != "plist")) {
            return false;
        }
        if (!count(closes, selfClosed) || !endText()) return false;
        if (name == "key" && !closes &&
            ++keys_[depth_ - (selfClosed ? 0 : 1)] > kMaxPropertyListKeys) {
            return false;
        }
        copy(end + 1);
        return true;
    }

    void text(std::size_t length) {
        const auto begin = rest_.begin();
        const auto entities = std::count(begin, begin + static_cast<std::ptrdiff_t>(length), '&');
        entities_ += static_cast<std::uint64_t>(entities);
        textLength_ += length;
        copy(length);
    }

    // A tag ends a text; what is dropped from it does not.
    bool endText() {
        moves_ += entities_ * textLength_;
        entities_ = textLength_ = 0;
        return moves_ <= kMaxPropertyListMoves;
    }

    bool count(bool closes, bool selfClosed) {
        if (closes) {
            if (depth_ == 0) return false;
            --depth_;
            return true;
        }
        if (++values_ > kMaxPropertyListValues) return false;
        if (selfClosed) return true;
        if (depth_ == kMaxPropertyListDepth) return false;
        keys_[++depth_] = 0;
        return true;
    }

    void copy(std::size_t length) {
        out_.append(rest_.substr(0, length));
        rest_.remove_prefix(length);
    }

    bool skipPast(std::string_view end, std::size_t from) {
        const auto at = rest_.find(end, from);
        if (at == std::string_view::npos) return false;
        rest_.remove_prefix(at + end.size());
        return true;
    }

    bool copyPast(std::string_view end) {
        const auto at = rest_.find(end);
        if (at == std::string_view::npos) return false;
        copy(at + end.size());
        return true;
    }

    std::string_view rest_;
    std::string out_;
    std::uint32_t depth_ = 0;
    std::uint64_t values_ = 0;
    std::array<std::uint32_t, kMaxPropertyListDepth + 1> keys_{};  // by depth of their dictionary
    // Of the text since the last tag, and the bytes moved for all before.
    std::uint64_t entities_ = 0;
    std::uint64_t textLength_ = 0;
    std::uint64_t moves_ = 0;
};

}  // namespace

std::optional<std::string> tameXmlPropertyList(Bytes data) {
    std::string xml(data.begin(), data.end());
    if (xml.find('\0') != std::string::npos) return std::nullopt;
    return XmlFilter(xml).run();
}

}  // namespace salvor
