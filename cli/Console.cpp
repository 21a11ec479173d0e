#include "cli/Console.h"

#include "cli/DisplayText.h"

namespace salvor::cli {
namespace {

void writeLine(const Console& console, std::string_view colour, std::string_view prefix,
               std::string_view text) {
    if (console.coloured) console.err << "\x1b[" << colour << 'm';
    console.err << prefix;
    if (console.coloured) console.err << "\x1b[0m";
    console.err << ' ' << printable(text) << '\n' << std::flush;
}

}  // namespace

void Console::error(std::string_view text) const {
    writeLine(*this, "31", "salvor: error:", text);
}

void Console::warning(std::string_view text) const {
    writeLine(*this, "33", "salvor: warning:", text);
}

}  // namespace salvor::cli
