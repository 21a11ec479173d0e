#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace salvor {

/// When the files of a backup were last changed on the device, from its binary index: 16 bytes of
/// memory for each of its records. An index that cannot be read tells nothing.
class IndexDates {
  public:
    explicit IndexDates(const std::filesystem::path& index);

    /// Unix seconds; nothing for a file without a record, or with a record that has no date.
    std::optional<std::int64_t> of(const std::string& storedName) const;

  private:
    /// A date by the beginning of the stored name, which is chance enough to tell names apart.
    using Dated = std::pair<std::uint64_t, std::uint32_t>;

    std::vector<Dated> dates_;  ///< in the order of the names
};

}  // namespace salvor
