#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "util/Bytes.h"
#include "util/Text.h"

namespace salvor {

/// An object graph as NSKeyedArchiver writes it: a binary property list whose "$objects" refer to
/// each other by number. Values are reached from the root, "$top"."root"; a value may stand in
/// place or be referred to, texts and data also inside an object of their own ("NS.string",
/// "NS.data"). Whatever is not there, or of another type, is absent. No reference is followed
/// further than that, so an archive that refers to itself harms nobody. Not thread-safe.
class KeyedArchive {
  public:
    /// A value of the archive; copies share the underlying tree.
    class Value {
      public:
        Value() = default;
        explicit operator bool() const { return node_ != nullptr; }

        Value at(const char* key) const;
        Text text() const;
        std::optional<std::string> data() const;
        /// A whole number; of a real one or a date its whole part, dates in Unix seconds.
        std::optional<std::int64_t> integer() const;

      private:
        friend class KeyedArchive;
        Value(std::shared_ptr<void> tree, void* objects, void* node)
            : tree_(std::move(tree)), objects_(objects), node_(node) {}
        Value resolved(void* node) const;

        std::shared_ptr<void> tree_;
        void* objects_ = nullptr;
        void* node_ = nullptr;
    };

    /// The root of the archive; nothing when `data` is no keyed archive or an absurd one.
    static Value parse(Bytes data);
};

}  // namespace salvor
