#pragma once

#include <stdexcept>
#include <string>

#include "cli/ExitStatus.h"

namespace salvor::cli {

/// Ends a command: the text becomes its one "salvor: error: ..." line and names file and cause.
class Failure : public std::runtime_error {
  public:
    Failure(ExitStatus status, const std::string& text)
        : std::runtime_error(text), status_(status) {}

    ExitStatus status() const { return status_; }

  private:
    ExitStatus status_;
};

}  // namespace salvor::cli
