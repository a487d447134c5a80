#pragma once

#include <string>
#include <string_view>

namespace common {

/// `text` as it may stand at the end of a trace line: whatever a client put into it, it can neither
/// end the line nor change how a terminal shows it. Control characters, bytes that are not UTF-8
/// and the backslash itself become `\n`, `\t`, `\\` or `\xNN` a byte, so that the text can be
/// recovered.
std::string escapedText(std::string_view text);

/// `word` as it may stand between two blanks of a trace line: blanks are escaped as well, and an
/// empty word is written "-".
std::string escapedWord(std::string_view word);

/// `text` as a JSON string, quotes included, that is as safe to show: control characters become
/// `\uNNNN`. JSON holds UTF-8 alone, so each byte that is none becomes U+FFFD.
std::string jsonString(std::string_view text);

} // namespace common
