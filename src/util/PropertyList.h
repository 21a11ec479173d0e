#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "util/Bytes.h"
#include "util/Text.h"

namespace salvor {

/// The top dictionary of a property list, XML or binary, or a dictionary inside one. Whatever
/// cannot be read (no file, garbage, absurd depth or size, no dictionary at the top) is an empty
/// dictionary. Copies share the underlying tree. Not thread-safe.
class PropertyList {
  public:
    PropertyList() = default;
    static PropertyList read(const std::filesystem::path& file);
    static PropertyList parse(Bytes data);

    bool has(const char* key) const;
    /// The text under `key`; absent when there is none or it is no text.
    Text text(const char* key) const;
    /// The bytes under `key`; absent when there are none.
    std::optional<std::string> data(const char* key) const;
    /// The truth of the value under `key` (a boolean, a number that is not 0, a text that begins
    /// like yes or true); nothing when the key is absent.
    std::optional<bool> boolean(const char* key) const;
    /// The dictionary under `key`; an empty one when there is none.
    PropertyList dictionary(const char* key) const;

  private:
    PropertyList(std::shared_ptr<void> tree, void* node) : tree_(std::move(tree)), node_(node) {}
    void* item(const char* key) const;

    std::shared_ptr<void> tree_;
    void* node_ = nullptr;  ///< a dictionary of the tree, or null
};

}  // namespace salvor
