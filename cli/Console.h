#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace salvor::cli {

/// Where a command writes: data on `out`, everything else on `err`. The defaults are those of
/// plain streams, so that tests run commands in-process; `systemConsole` knows the terminal.
struct Console {
    std::ostream& out;
    std::ostream& err;
    bool redraws = false;  ///< `err` is a terminal on which a line can be redrawn
    bool coloured = false;
    bool outShown = false;  ///< `out` is a terminal: what it gets is to be printable
    std::function<int()> width = [] { return 80; };  ///< columns of the terminal, asked anew
    bool asks = false;  ///< a person sits at the terminal and can answer
    /// Waits for that person to press Enter; false when they do not want to.
    std::function<bool()> enterPressed = [] { return false; };
    /// Ends what waits for the reader of `out`, now and later; from any thread.
    std::function<void()> giveUpOut = [] {};
    /// A line that they type, such as a password, of which the terminal shows nothing; nothing when
    /// there is none.
    std::function<std::optional<std::string>()> hiddenLine = [] { return std::nullopt; };
    /// Why writing to `out` failed (errno), 0 when that is not known.
    std::function<int()> outError = [] { return 0; };

    void error(std::string_view text) const;
    void warning(std::string_view text) const;
};

}  // namespace salvor::cli
