#include "Table.h"

#include <algorithm>
#include <cassert>
#include <cwchar>

#include "Output.h"

namespace dolqctl {

std::size_t displayWidth(std::string_view text) {
    std::mbstate_t state{};
    std::size_t width = 0;
    while (!text.empty()) {
        wchar_t character = 0;
        const std::size_t length = std::mbrtowc(&character, text.data(), text.size(), &state);
        if (length == 0 || length > text.size()) { // NUL, malformed or cut off
            state = {};
            ++width;
            text.remove_prefix(1);
            continue;
        }
        width += static_cast<std::size_t>(std::max(0, wcwidth(character)));
        text.remove_prefix(length);
    }
    return width;
}

Table::Cell::Cell(std::string_view cellText, Style cellStyle)
    : text(printable(cellText)), style(cellStyle) {}

Table::Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

void Table::add(std::vector<Cell> cells) {
    assert(cells.size() == m_columns.size());
    m_rows.push_back(std::move(cells));
}

void Table::write(Output& output) const {
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        widths.push_back(displayWidth(m_columns[i].heading));
        for (const std::vector<Cell>& row : m_rows) {
            widths[i] = std::max(widths[i], displayWidth(row[i].text));
        }
    }
    const auto writeCell = [&](std::size_t column, std::string_view text, Style style) {
        const std::string blanks(widths[column] - displayWidth(text), ' ');
        const bool isLast = column + 1 == m_columns.size();
        const bool isRight = m_columns[column].align == Align::Right;
        output.stream() << (isRight ? blanks : "") << output.styled(style, text)
                        << (isRight || isLast ? "" : blanks) << (isLast ? "\n" : "  ");
    };
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        writeCell(i, m_columns[i].heading, Style::Bold);
    }
    for (const std::vector<Cell>& row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            writeCell(i, row[i].text, row[i].style);
        }
    }
}

} // namespace dolqctl
