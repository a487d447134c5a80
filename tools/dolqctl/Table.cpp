#include "Table.h"

#include <algorithm>
#include <cassert>
#include <cwchar>
#include <utility>

#include "Output.h"

namespace dolqctl {

namespace {

constexpr std::size_t kGap = 2;         // between columns
constexpr std::size_t kLeastWidth = 20; // that a column shrinks to

/// Takes the first character off `text`, and returns how many places of a terminal it takes.
std::size_t takeCharacter(std::string_view& text) {
    std::mbstate_t state{};
    wchar_t character = 0;
    const std::size_t length = std::mbrtowc(&character, text.data(), text.size(), &state);
    const bool isBroken = length == 0 || length > text.size(); // NUL, malformed or cut off
    text.remove_prefix(isBroken ? 1 : length);
    return isBroken ? 1 : static_cast<std::size_t>(std::max(0, wcwidth(character)));
}

/// Its beginning and its end.
std::string cutTo(std::size_t width, std::string_view text) {
    std::size_t rest = displayWidth(text);
    if (rest <= width) {
        return std::string(text);
    }
    std::string_view end = text;
    std::size_t begin = 0; // so many bytes
    std::size_t places = 0;
    for (; places < width / 2; begin = text.size() - end.size()) {
        const std::size_t taken = takeCharacter(end);
        places += taken;
        rest -= taken;
    }
    while (places + 1 + rest > width) {
        rest -= takeCharacter(end);
    }
    return std::string(text.substr(0, begin)).append("…").append(end);
}

} // namespace

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        if (text.front() == '\033') { // a style's, which ends in an m
            text.remove_prefix(std::min(text.find('m'), text.size() - 1) + 1);
            continue;
        }
        width += takeCharacter(text);
    }
    return width;
}

Table::Cell::Cell(std::string_view cellText, Style cellStyle)
    : text(printable(cellText)), style(cellStyle) {}

Table::Table(std::vector<Column> columns) : m_columns(std::move(columns)) {
    for (Column& column : m_columns) {
        column.width = std::max(column.width, displayWidth(column.heading));
    }
}

void Table::add(std::vector<Cell> cells) {
    assert(cells.size() == m_columns.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
        m_columns[i].width = std::max(m_columns[i].width, displayWidth(cells[i].text));
    }
    m_rows.push_back(std::move(cells));
}

void Table::write(Output& output) const {
    std::size_t excess = (m_columns.size() - 1) * kGap; // of a row, beyond the terminal's width
    std::vector<Cell> headings;
    for (const Column& column : m_columns) {
        excess += column.width;
        headings.emplace_back(column.heading, Style::Bold);
    }
    excess -= std::min(excess, output.width());
    writeRow(headings, excess, output);
    for (const std::vector<Cell>& row : m_rows) {
        writeRow(row, excess, output);
    }
}

void Table::writeRow(const std::vector<Cell>& cells, std::size_t excess, Output& output) const {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const Column& column = m_columns[i];
        const std::size_t width =
            column.mayShrink && column.width > kLeastWidth
                ? std::max(column.width - std::min(column.width, excess), kLeastWidth)
                : column.width;
        const std::string text = column.mayShrink ? cutTo(width, cells[i].text) : cells[i].text;
        const std::string blanks(width - displayWidth(text), ' ');
        const bool isLast = i + 1 == cells.size();
        const bool isRight = column.align == Align::Right;
        line += (isRight ? blanks : "") + output.styled(cells[i].style, text) +
                (isRight || isLast ? "" : blanks) + (isLast ? "" : std::string(kGap, ' '));
    }
    output.line(line);
}

} // namespace dolqctl
