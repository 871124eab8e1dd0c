#include "table.h"

#include "command_line/columns.h"
#include "wording/text.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace kavio::wallet {

namespace {

using command_line::columnsOf;
using command_line::cutTo;

constexpr std::size_t gap = 2;
/// Prose that is cut further says nothing.
constexpr std::size_t narrowest = 8;

template <class Shown>
std::size_t totalOf(const std::vector<Shown>& columns) {
    return std::accumulate(columns.begin(), columns.end(), gap * (columns.size() - 1),
                           [](std::size_t sum, const Shown& column) { return sum + column.width; });
}

std::string blanks(std::size_t count) { return std::string(count, ' '); }

}  // namespace

Table::Table(std::vector<Column> columns) : mColumns(std::move(columns)) {}

void Table::add(std::vector<std::string> cells) {
    for (auto& cell : cells) cell = printable(cell);
    cells.resize(mColumns.size());
    mRows.push_back(std::move(cells));
}

std::string Table::text(std::optional<std::size_t> width) const {
    const auto columns = shown(width);
    return width && totalOf(columns) > *width ? paragraphs() : lines(columns);
}

Table::Shown Table::inFull(std::size_t index) const {
    auto width = columnsOf(mColumns[index].heading);
    for (const auto& row : mRows) width = std::max(width, columnsOf(row[index]));
    return {index, width};
}

std::vector<Table::Shown> Table::shown(std::optional<std::size_t> limit) const {
    std::vector<Shown> columns;
    for (std::size_t i = 0; i < mColumns.size(); ++i) columns.push_back(inFull(i));
    const auto isTooWide = [&] { return limit && totalOf(columns) > *limit; };
    while (isTooWide()) {
        const auto least =
            std::ranges::max_element(columns, {}, [&](const Shown& one) { return mColumns[one.index].expendable; });
        if (mColumns[least->index].expendable == 0) break;
        columns.erase(least);
    }
    while (isTooWide()) {
        const auto widest = std::ranges::max_element(columns, {}, [&](const Shown& one) {
            return mColumns[one.index].kind == Column::Kind::PROSE ? one.width : 0;
        });
        if (mColumns[widest->index].kind != Column::Kind::PROSE || widest->width <= narrowest) break;
        --widest->width;
    }
    return columns;
}

std::string Table::lines(const std::vector<Shown>& columns) const {
    std::string result;
    const auto addLine = [&](const auto& cellOf) {
        std::string line;
        for (const auto& [index, width] : columns) {
            const auto cell = cutTo(width, cellOf(index));
            const auto padding = blanks(width - columnsOf(cell));
            line += mColumns[index].kind == Column::Kind::NUMBER ? padding + cell : cell + padding;
            line += blanks(gap);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        result += line + '\n';
    };
    addLine([&](std::size_t i) { return mColumns[i].heading; });
    for (const auto& row : mRows) addLine([&](std::size_t i) { return row[i]; });
    return result;
}

std::string Table::paragraphs() const {
    std::size_t longest = 0;
    for (const auto& column : mColumns) longest = std::max(longest, columnsOf(column.heading));
    std::string result;
    for (const auto& row : mRows) {
        if (!result.empty()) result += '\n';
        result += row.front() + '\n';
        for (std::size_t i = 1; i < row.size(); ++i) {
            if (row[i].empty()) continue;
            const auto& heading = mColumns[i].heading;
            result += blanks(gap) + heading + blanks(longest - columnsOf(heading) + gap) + row[i] + '\n';
        }
    }
    return result;
}

}  // namespace kavio::wallet
