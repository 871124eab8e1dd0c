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
};

/// Rows under headings, as text for a terminal. Cells are made printable.
class Table {
public:
    explicit Table(std::vector<Column> columns);

    /// One cell per column.
    void add(std::vector<std::string> cells);
    bool isEmpty() const { return mRows.empty(); }

    /// One line per row. If there is a `width`, prose is cut to fit it, the widest column first.
    std::string text(std::optional<std::size_t> width) const;

private:
    std::vector<std::size_t> widths(std::optional<std::size_t> limit) const;

    std::vector<Column> mColumns;
    std::vector<std::vector<std::string>> mRows;
};

}  // namespace kavio::wallet
