#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace salvor {

/// A property-list dictionary under construction. Written as XML or in binary form.
class PropertyListDictionary {
  public:
    PropertyListDictionary();
    ~PropertyListDictionary();
    PropertyListDictionary(PropertyListDictionary&& other) noexcept;
    PropertyListDictionary& operator=(PropertyListDictionary&&) = delete;

    PropertyListDictionary& text(const std::string& key, const std::string& value);
    PropertyListDictionary& boolean(const std::string& key, bool value);
    PropertyListDictionary& integer(const std::string& key, std::uint64_t value);
    /// Unix seconds.
    PropertyListDictionary& date(const std::string& key, std::int64_t unixSeconds);
    PropertyListDictionary& data(const std::string& key, std::string_view bytes);
    PropertyListDictionary& dictionary(const std::string& key, PropertyListDictionary value);
    PropertyListDictionary& real(const std::string& key, double value);
    PropertyListDictionary& emptyArray(const std::string& key);
    /// An array of dictionaries.
    PropertyListDictionary& array(const std::string& key,
                                  std::vector<PropertyListDictionary> values);

    std::string xml() const;
    void writeXml(const std::filesystem::path& file) const;
    void writeBinary(const std::filesystem::path& file) const;

  private:
    PropertyListDictionary& set(const std::string& key, void* node);

    void* root_;  ///< a plist_t
};

}  // namespace salvor
