#include "TaVekInspect/render/table.h"

#include <algorithm>

#include "TaVekInspect/render/terminal.h"
#include "TaVekInspect/render/text.h"

void Table::print(std::ostream& out) const {
    if (!outputIsTerminal()) {
        for (const auto& cells : rows_) {
            for (std::size_t i = 0; i < cells.size(); ++i) out << (i == 0 ? "" : "\t") << printable(cells[i]);
            out << '\n';
        }
        return;
    }
    const std::vector<std::size_t> all = widths();
    std::vector<std::string> headings;
    for (const Column& column : columns_) headings.push_back(column.heading);
    out << painted(Colour::bold, aligned(headings, all)) << '\n';
    for (const auto& cells : rows_) out << aligned(cells, all) << '\n';
}

std::vector<std::size_t> Table::widths() const {
    std::vector<std::size_t> widths;
    for (const Column& column : columns_) widths.push_back(column.heading.size());
    for (const auto& cells : rows_) {
        for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], widthOf(cells[i]));
    }
    return widths;
}

std::string Table::aligned(const std::vector<std::string>& cells,
                           const std::vector<std::size_t>& widths) const {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string cell = printable(cells[i]);
        const std::string padding(widths[i] - widthOf(cell), ' ');
        line += columns_[i].align == Align::right ? padding + cell : cell + padding;
        line += "  ";
    }
    return line.substr(0, line.find_last_not_of(' ') + 1);
}
