#include "table.h"

#include "command_line/columns.h"
#include "people/text.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace kavio::wallet {

namespace {

using command_line::columnsOf;
using command_line::cutTo;

constexpr std::size_t gap = 2;
constexpr std::size_t narrowest = 4;

}  // namespace

Table::Table(std::vector<Column> columns) : mColumns(std::move(columns)) {}

void Table::add(std::vector<std::string> cells) {
    for (auto& cell : cells) cell = printable(cell);
    cells.resize(mColumns.size());
    mRows.push_back(std::move(cells));
}

std::string Table::text(std::optional<std::size_t> width) const {
    const auto columnWidths = widths(width);
    std::string result;
    const auto addLine = [&](const auto& cellOf) {
        std::string line;
        for (std::size_t i = 0; i < mColumns.size(); ++i) {
            const auto cell = cutTo(columnWidths[i], cellOf(i));
            const std::string padding(columnWidths[i] - columnsOf(cell), ' ');
            line += mColumns[i].kind == Column::Kind::NUMBER ? padding + cell : cell + padding;
            line.append(gap, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        result += line + '\n';
    };
    addLine([&](std::size_t i) { return mColumns[i].heading; });
    for (const auto& row : mRows) addLine([&](std::size_t i) { return row[i]; });
    return result;
}

std::vector<std::size_t> Table::widths(std::optional<std::size_t> limit) const {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < mColumns.size(); ++i) {
        auto widest = columnsOf(mColumns[i].heading);
        for (const auto& row : mRows) widest = std::max(widest, columnsOf(row[i]));
        result.push_back(widest);
    }
    const auto total = [&] { return std::accumulate(result.begin(), result.end(), gap * (result.size() - 1)); };
    const auto widthToCut = [&](const Column& column) {
        return column.kind == Column::Kind::PROSE ? result[static_cast<std::size_t>(&column - mColumns.data())] : 0;
    };
    while (limit && total() > *limit) {
        const auto widest = std::ranges::max_element(mColumns, {}, widthToCut);
        if (widthToCut(*widest) <= narrowest) break;  // a terminal that narrow wraps the lines
        --result[static_cast<std::size_t>(widest - mColumns.begin())];
    }
    return result;
}

}  // namespace kavio::wallet
