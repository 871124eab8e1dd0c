#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kavio::wallet {

struct Column {
    enum class Kind {
        PROSE,   ///< may be cut on a narrow terminal
        EXACT,   ///< useful only as a whole, such as a code that a command takes
        NUMBER,  ///< like EXACT, aligned to the right
    };
    std::string heading;
    Kind kind = Kind::PROSE;
    /// Where a table is too wide, the column with the greatest number is left out first, and one with 0 never.
    int expendable = 0;
};

/// Rows under headings, as text for a terminal. Cells are made printable.
class Table {
public:
    explicit Table(std::vector<Column> columns);

    /// One cell per column.
    void add(std::vector<std::string> cells);
    bool isEmpty() const { return mRows.empty(); }

    /// One line per row. To fit a `width`, columns are left out; if that is not enough, prose is cut, the widest column
    /// first; and if even that is not enough, each row becomes a paragraph with one line per cell.
    std::string text(std::optional<std::size_t> width) const;

private:
    /// A column that is shown.
    struct Shown {
        std::size_t index;
        std::size_t width;
    };

    Shown inFull(std::size_t index) const;
    std::vector<Shown> shown(std::optional<std::size_t> limit) const;
    std::string lines(const std::vector<Shown>& columns) const;
    std::string paragraphs() const;

    std::vector<Column> mColumns;
    std::vector<std::vector<std::string>> mRows;
};

}  // namespace kavio::wallet
