#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kavio::wallet {

struct Column {
    std::string heading;
    bool isRightAligned = false;
};

/// Rows under headings, as text for a terminal. Cells are made printable.
class Table {
public:
    explicit Table(std::vector<Column> columns);

    /// One cell a column.
    void add(std::vector<std::string> cells);
    bool isEmpty() const { return mRows.empty(); }

    /// A line a row. The widest columns are cut so that a line takes no more than `width` columns, if there is a width.
    std::string text(std::optional<std::size_t> width) const;

private:
    std::vector<std::size_t> widths(std::optional<std::size_t> limit) const;

    std::vector<Column> mColumns;
    std::vector<std::vector<std::string>> mRows;
};

}  // namespace kavio::wallet
