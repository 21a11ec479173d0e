#include "cli/TextTable.h"

#include <algorithm>

#include "cli/DisplayText.h"

namespace salvor::cli {

void TextTable::add(std::vector<std::string> cells) {
    for (auto& cell : cells) cell = printable(cell);
    cells.resize(columns_.size());
    rows_.push_back(std::move(cells));
}

void TextTable::write(std::ostream& out) const {
    std::vector<std::size_t> widths(columns_.size(), 0);
    for (const auto& row : rows_)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i]));

    for (const auto& row : rows_) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - displayWidth(row[i]), ' ');
            if (i > 0) line += "  ";
            if (columns_[i] == Align::Right)
                line += padding + row[i];
            else
                line += i + 1 < row.size() ? row[i] + padding : row[i];
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

}  // namespace salvor::cli
