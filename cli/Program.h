#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "cli/Console.h"

namespace salvor::cli {

/// Runs the command line `args` (without the program's name) on plain streams or on a console
/// that knows its terminal, and returns the exit status. Nothing is thrown.
int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int run(const std::vector<std::string>& args, Console& console);

/// The program itself: standard streams, terminal, a closed pipe as a quiet end.
int runProgram(int argc, char** argv);

}  // namespace salvor::cli
