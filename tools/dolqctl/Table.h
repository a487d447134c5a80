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
        bool mayShrink = false; ///< its texts are cut in the middle where a terminal is too narrow
        std::size_t width = 0;  ///< of the widest text; the table's own
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
    bool isEmpty() const { return m_rows.empty(); }

    void write(Output& output) const;

private:
    void writeRow(const std::vector<Cell>& cells, std::size_t excess, Output& output) const;

    std::vector<Column> m_columns;
    std::vector<std::vector<Cell>> m_rows;
};

/// How many places of a terminal `text` takes: none for a combining character or
/// a style, two for a wide character.
std::size_t displayWidth(std::string_view text);

} // namespace dolqctl
