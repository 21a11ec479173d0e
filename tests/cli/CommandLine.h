#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "cli/Program.h"

namespace salvor::cli {

/// What one run of the program, in this process, wrote and answered.
struct CommandLine {
    int status = 0;
    std::string out;
    std::string err;
};

inline CommandLine runSalvor(const std::vector<std::string>& args) {
    std::ostringstream out;
    std::ostringstream err;
    const int status = run(args, out, err);
    return {status, out.str(), err.str()};
}

}  // namespace salvor::cli
