#include <algorithm>
#include <vector>

#include "util/PropertyListGuard.h"

namespace salvor {
namespace {

constexpr std::size_t kHeaderBytes = 8;
constexpr std::size_t kTrailerBytes = 32;

enum ObjectKind : unsigned {
    kData = 0x4,
    kAscii = 0x5,
    kUtf16 = 0x6,
    kArray = 0xA,
    kSet = 0xC,
    kDictionary = 0xD
};

// Callers have checked that `count` bytes lie at `offset`.
std::uint64_t bigEndian(Bytes data, std::size_t offset, std::size_t count) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : data.subspan(offset, count)) value = (value << 8) | byte;
    return value;
}

// What an object holds: references to others, or bytes of its own.
struct Content {
    std::size_t offset = 0;
    std::uint64_t references = 0;
    std::uint64_t bytes = 0;
};

// Size of the tree below one object once every reference is written out.
struct Measure {
    std::uint64_t values = 0;  // 0: not known yet
    std::uint64_t bytes = 0;   // of texts and data
    std::uint32_t depth = 0;
    bool open = false;  // on the path that is walked
};

struct Frame {
    std::uint64_t object = 0;
    Content content;
    std::uint64_t next = 0;
};

class ObjectTable {
  public:
    explicit ObjectTable(Bytes data) : data_(data) {}

    bool isTame() {
        if (!readTrailer()) return false;
        measures_.resize(static_cast<std::size_t>(objects_));
        if (!enter(root_)) return false;
        while (!path_.empty()) {
            Frame& frame = path_.back();
            if (frame.next == frame.content.references) {
                if (!leave()) return false;
                continue;
            }
            const auto at = frame.content.offset + frame.next++ * referenceBytes_;
            const auto child = bigEndian(data_, at, referenceBytes_);
            if (child >= objects_) return false;
            if (!known(child) ? !enter(child) : !add(child)) return false;
        }
        return true;
    }

  private:
    bool readTrailer() {
        if (data_.size() < kHeaderBytes + kTrailerBytes) return false;
        const std::size_t trailer = data_.size() - kTrailerBytes;
        offsetBytes_ = data_[trailer + 6];
        referenceBytes_ = data_[trailer + 7];
        objects_ = bigEndian(data_, trailer + 8, 8);
        root_ = bigEndian(data_, trailer + 16, 8);
        const std::uint64_t table = bigEndian(data_, trailer + 24, 8);
        if (offsetBytes_ < 1 || offsetBytes_ > 8 || referenceBytes_ < 1 || referenceBytes_ > 8) {
            return false;
        }
        if (table < kHeaderBytes || table > trailer || root_ >= objects_) return false;
        table_ = static_cast<std::size_t>(table);
        return objects_ <= (trailer - table_) / offsetBytes_;
    }

    bool known(std::uint64_t object) const { return measures_[object].values != 0; }

    bool enter(std::uint64_t object) {
        Measure& measure = measures_[object];
        if (measure.open || path_.size() >= kMaxPropertyListDepth) return false;
        const auto content = contentOf(object);
        if (!content) return false;
        measure = {1, content->bytes, 1, true};
        path_.push_back({object, *content, 0});
        // While it is open the object is not yet known to others.
        return true;
    }

    bool leave() {
        const std::uint64_t object = path_.back().object;
        path_.pop_back();
        measures_[object].open = false;
        return path_.empty() || add(object);
    }

    // Writes a measured child into the object that is being walked.
    bool add(std::uint64_t child) {
        const Measure& below = measures_[child];
        Measure& measure = measures_[path_.back().object];
        if (below.open) return false;
        measure.values += below.values;
        measure.bytes += below.bytes;
        measure.depth = std::max(measure.depth, below.depth + 1);
        return measure.values <= kMaxPropertyListValues && measure.bytes <= mostBytes() &&
               measure.depth <= kMaxPropertyListDepth;
    }

    // One text may stand for many, but few lists repeat more than their keys.
    std::uint64_t mostBytes() const {
        constexpr std::uint64_t kBase = std::uint64_t{8} << 20;
        constexpr std::uint64_t kCopies = 4;
        return kBase + kCopies * data_.size();
    }

    // Nothing when references leave the data.
    std::optional<Content> contentOf(std::uint64_t object) const {
        const auto entry = table_ + static_cast<std::size_t>(object) * offsetBytes_;
        const std::uint64_t start = bigEndian(data_, entry, offsetBytes_);
        if (start < kHeaderBytes || start >= table_) return std::nullopt;
        auto at = static_cast<std::size_t>(start);
        const unsigned kind = data_[at] >> 4;
        const bool holdsBytes = kind == kData || kind == kAscii || kind == kUtf16;
        if (!holdsBytes && kind != kArray && kind != kSet && kind != kDictionary) return Content{};
        auto count = countAt(at);
        if (!count) return std::nullopt;
        // Texts and data that leave the file the library refuses itself.
        if (holdsBytes) {
            const auto length = std::min<std::uint64_t>(*count, table_ - at);
            return Content{at, 0, kind == kUtf16 ? length * 2 : length};
        }
        if (*count > (table_ - at) / referenceBytes_) return std::nullopt;
        if (kind == kDictionary) *count *= 2;
        if (*count > (table_ - at) / referenceBytes_) return std::nullopt;
        return Content{at, *count, 0};
    }

    // The count in an object's mark, or in the number behind it; `at` moves behind both.
    std::optional<std::uint64_t> countAt(std::size_t& at) const {
        const std::uint64_t count = data_[at] & 0xF;
        ++at;
        if (count != 0xF) return count;
        if (at >= table_ || (data_[at] >> 4) != 1) return std::nullopt;
        const std::size_t bytes = std::size_t{1} << (data_[at] & 0xF);
        ++at;
        if (bytes > 8 || bytes > table_ - at) return std::nullopt;
        at += bytes;
        return bigEndian(data_, at - bytes, bytes);
    }

    Bytes data_;
    std::size_t offsetBytes_ = 0;
    std::size_t referenceBytes_ = 0;
    std::uint64_t objects_ = 0;
    std::uint64_t root_ = 0;
    std::size_t table_ = 0;
    std::vector<Measure> measures_;
    std::vector<Frame> path_;
};

}  // namespace

bool binaryPropertyListIsTame(Bytes data) {
    return ObjectTable(data).isTame();
}

}  // namespace salvor
