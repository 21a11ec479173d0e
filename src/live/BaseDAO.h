#pragma once

#include <memory>

#include "scan/ScanState.h"

namespace salvor {

/// Base of the data-access object: keeps the connection that was the scan's current one when it
/// was made.
class BaseDAO {
  public:
    explicit BaseDAO(const ScanState& state) : dbUtils(state.dbUtils()) {}
    virtual ~BaseDAO() = default;
    BaseDAO(const BaseDAO&) = delete;
    BaseDAO& operator=(const BaseDAO&) = delete;

  protected:
    std::shared_ptr<FMDBUtils> dbUtils;
};

}  // namespace salvor
