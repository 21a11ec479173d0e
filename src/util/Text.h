#pragma once

#include <optional>
#include <string>

namespace salvor {

/// A UTF-8 text that may be absent. An absent text is not an empty one: the two compare unequal
/// and are written differently (null and "" in JSON).
using Text = std::optional<std::string>;

}  // namespace salvor
