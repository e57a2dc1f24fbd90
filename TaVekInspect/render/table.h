#pragma once

#include <ostream>
#include <string>
#include <vector>

/// Rows of cells: under headings and in aligned columns on a terminal, cells with tabs in between elsewhere.
class Table {
  public:
    enum class Align { left, right };
    struct Column {
        std::string heading;
        Align align = Align::left;
    };

    explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

    /// Appends a row of as many cells as there are columns.
    void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

    void print(std::ostream& out) const;

  private:
    std::vector<std::size_t> widths() const;
    std::string aligned(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) const;

    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;
};
