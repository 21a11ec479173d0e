#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "util/Bytes.h"
#include "util/Text.h"

namespace salvor {

/// The top dictionary of a property list, XML or binary, or a dictionary inside one. Whatever
/// cannot be read (no file, garbage, absurd depth or size) is an empty dictionary; a list with an
/// array at the top is one without keys whose `dictionaries` can be had. Copies share the
/// underlying tree. Not thread-safe.
class PropertyList {
  public:
    PropertyList() = default;
    static PropertyList read(const std::filesystem::path& file);
    static PropertyList parse(Bytes data);

    /// Whether it was read from a property list.
    explicit operator bool() const { return node_ != nullptr; }
    bool has(const char* key) const;
    /// The text under `key`; absent when there is none or it is no text.
    Text text(const char* key) const;
    /// The bytes under `key`; absent when there are none.
    std::optional<std::string> data(const char* key) const;
    /// The truth of the value under `key` (a boolean, a number that is not 0, a text that begins
    /// like yes or true); nothing when the key is absent.
    std::optional<bool> boolean(const char* key) const;
    /// The whole number under `key`; absent when there is none.
    std::optional<std::int64_t> integer(const char* key) const;
    /// The Unix seconds of the date under `key`; absent when there is none.
    std::optional<std::int64_t> date(const char* key) const;
    /// The text or the finite number under `key`, a number in decimal digits.
    Text scalar(const char* key) const;
    /// The dictionary under `key`; an empty one when there is none.
    PropertyList dictionary(const char* key) const;
    /// The dictionaries among the values of this one (of the array, when that is at the top), in
    /// their order.
    std::vector<PropertyList> dictionaries() const;
    /// The same of the array or dictionary under `key`.
    std::vector<PropertyList> dictionaries(const char* key) const;

  private:
    PropertyList(std::shared_ptr<void> tree, void* node) : tree_(std::move(tree)), node_(node) {}
    void* item(const char* key) const;
    std::vector<PropertyList> dictionariesOf(void* container) const;

    std::shared_ptr<void> tree_;
    void* node_ = nullptr;  ///< a dictionary of the tree or the array at its top, or null
};

}  // namespace salvor
