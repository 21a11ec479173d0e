#pragma once

#include <memory>
#include <vector>

namespace salvor {

/// An ordered, growing list of records that other lists may share.
template <class Record>
using List = std::vector<std::shared_ptr<Record>>;

}  // namespace salvor
