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
/// No cell is left empty ("-" stands for nothing), and no line ends in blanks of the table's.
class Table {
public:
    struct Column {
        std::string_view heading;
        Align align = Align::Left;
    };
    struct Cell {
        Cell(std::string_view cellText, Style cellStyle = Style::Plain);
        Cell(const std::string& cellText) : Cell(std::string_view(cellText)) {}
        Cell(const char* cellText) : Cell(std::string_view(cellText)) {}
        std::string text; // printable
        Style style;
    };

    explicit Table(const std::vector<Column>& columns);

    /// One cell a column; foreign text may be given as it is.
    void add(std::vector<Cell> cells);
    bool isEmpty() const { return m_rows.size() == 1; }

    void write(Output& output) const;

private:
    std::vector<Align> m_aligns;           // of the columns
    std::vector<std::vector<Cell>> m_rows; // the first one holds the headings
};

/// How many places of a terminal `text` takes: none for a combining character or
/// a style, two for a wide character.
std::size_t displayWidth(std::string_view text);

} // namespace dolqctl
