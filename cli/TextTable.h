#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace salvor::cli {

/// A table of a few columns, aligned by what each text takes on a terminal. Texts are made
/// printable; the last column is not padded.
class TextTable {
  public:
    enum class Align { Left, Right };

    explicit TextTable(std::vector<Align> columns) : columns_(std::move(columns)) {}

    /// `cells` has one text per column.
    void add(std::vector<std::string> cells);
    void write(std::ostream& out) const;

  private:
    std::vector<Align> columns_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace salvor::cli
