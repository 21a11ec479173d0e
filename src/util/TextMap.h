#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "util/Text.h"

namespace salvor {

/// A map from texts to values for millions of keys that stay: open addressing with the hash beside
/// the key, so that a key which is not there costs one access to memory instead of a walk along a
/// chain. At least a quarter of its places is free. Absent texts are no keys. Not thread-safe.
template <class Value>
class TextMap {
  public:
    /// The value of `key`; null without one. It lives until the next `tryEmplace`.
    const Value* find(const Text& key) const {
        if (!key || places_.empty()) return nullptr;
        const Place& place = places_[placeOf(key, hashOf(key))];
        return place.key ? &place.value : nullptr;
    }
    bool contains(const Text& key) const { return find(key) != nullptr; }

    /// Adds a key that is not there yet.
    void tryEmplace(const Text& key, Value value = {}) {
        if (!key) return;
        if (4 * (size_ + 1) > 3 * places_.size()) grow();
        const std::uint32_t hash = hashOf(key);
        Place& place = places_[placeOf(key, hash)];
        if (place.key) return;
        place = {key, hash, std::move(value)};
        ++size_;
    }
    std::size_t size() const { return size_; }

  private:
    struct Place {
        Text key;
        std::uint32_t hash = 0;
        [[no_unique_address]] Value value{};
    };

    static std::uint32_t hashOf(const Text& key) {
        const std::uint64_t hash = std::hash<Text>()(key);
        return static_cast<std::uint32_t>(hash ^ (hash >> 32));
    }

    /// Where `key` stands, or the free place for it.
    std::size_t placeOf(const Text& key, std::uint32_t hash) const {
        const std::size_t mask = places_.size() - 1;
        std::size_t at = hash & mask;
        while (places_[at].key && (places_[at].hash != hash || places_[at].key != key))
            at = (at + 1) & mask;
        return at;
    }

    void grow() {
        constexpr std::size_t kFirst = 16;  // a power of two, as all sizes are
        std::vector<Place> old(places_.empty() ? kFirst : 2 * places_.size());
        old.swap(places_);
        for (Place& place : old) {
            if (!place.key) continue;
            const std::size_t at = placeOf(place.key, place.hash);
            places_[at] = std::move(place);
        }
    }

    std::vector<Place> places_;
    std::size_t size_ = 0;
};

/// What a `TextMap` holds when its keys are all that counts.
struct NoValue {};

}  // namespace salvor
