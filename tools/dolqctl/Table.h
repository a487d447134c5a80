#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace dolqctl {

class Output;

enum class Style { Plain, Bold, Faint, Good, Warning, Bad };

enum class Align { Left, Right };

/// Rows under a heading, in columns two blanks apart that are as wide as a terminal shows them.
/// No cell is left empty ("-" stands for nothing), and no line ends in blanks.
class Table {
public:
    struct Column {
        std::string heading;
        Align align = Align::Left;
        std::size_t width = 0;  ///< at least
        bool mayShrink = false; ///< its texts are cut in the middle where a terminal is too narrow
    };
    struct Cell {
        Cell(std::string_view cellText, Style cellStyle = Style::Plain);
        Cell(const std::string& cellText) : Cell(std::string_view(cellText)) {}
        Cell(const char* cellText) : Cell(std::string_view(cellText)) {}
        std::string text; // printable
        Style style;
    };

    explicit Table(std::vector<Column> columns);

    /// One cell a column; foreign text may be given as it is.
    void add(std::vector<Cell> cells);
    /// A line of its own below the row that was added last.
    void addBelow(std::string_view text);
    bool isEmpty() const { return m_rows.empty(); }

    /// Writes what was added since, the first time below the heading.
    void write(Output& output);

private:
    struct Row {
        std::vector<Cell> cells;
        std::vector<std::string> below;
    };
    void writeRow(const std::vector<Cell>& cells, std::size_t excess, Output& output) const;

    std::vector<Column> m_columns;
    std::vector<Row> m_rows;
    bool m_hasHeading = false;
};

/// How many places of a terminal `text` takes: none for a combining character or
/// a style, two for a wide character.
std::size_t displayWidth(std::string_view text);

} // namespace dolqctl
