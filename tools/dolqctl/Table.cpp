#include "Table.h"

#include <algorithm>
#include <cassert>
#include <cwchar>
#include <utility>

#include "Output.h"

namespace dolqctl {

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        std::mbstate_t state{};
        wchar_t character = 0;
        std::size_t length = std::mbrtowc(&character, text.data(), text.size(), &state);
        if (text.front() == '\033') { // a style's, which ends in an m
            length = std::min(text.find('m'), text.size() - 1) + 1;
        } else if (length == 0 || length > text.size()) { // NUL, malformed or cut off
            length = 1;
            ++width;
        } else {
            width += static_cast<std::size_t>(std::max(0, wcwidth(character)));
        }
        text.remove_prefix(length);
    }
    return width;
}

Table::Cell::Cell(std::string_view cellText, Style cellStyle)
    : text(printable(cellText)), style(cellStyle) {}

Table::Table(const std::vector<Column>& columns) {
    std::vector<Cell> headings;
    for (const Column& column : columns) {
        m_aligns.push_back(column.align);
        headings.emplace_back(column.heading, Style::Bold);
    }
    add(std::move(headings));
}

void Table::add(std::vector<Cell> cells) {
    assert(cells.size() == m_aligns.size());
    m_rows.push_back(std::move(cells));
}

void Table::write(Output& output) const {
    std::vector<std::size_t> widths(m_aligns.size());
    for (const std::vector<Cell>& row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], displayWidth(row[i].text));
        }
    }
    for (const std::vector<Cell>& row : m_rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const bool isRight = m_aligns[i] == Align::Right;
            const std::string blanks(widths[i] - displayWidth(row[i].text), ' ');
            line += (i == 0 ? "" : "  ") + (isRight ? blanks : "") +
                    output.styled(row[i].style, row[i].text) +
                    (isRight || i + 1 == row.size() ? "" : blanks);
        }
        output.line(line);
    }
}

} // namespace dolqctl
