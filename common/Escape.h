#pragma once

#include <string>
#include <string_view>

namespace common {

/// `text` as it may stand at the end of a trace line: it can neither end the line nor change what a
/// terminal shows, whatever it holds. Control characters, bytes that are not UTF-8 and the
/// backslash become `\n`, `\t`, `\\` or one `\xNN` for each byte, from which the text can be
/// recovered.
std::string escapedText(std::string_view text);

/// `word` as it may stand between two blanks of a trace line: blanks are escaped as well, and an
/// empty word is written "-".
std::string escapedWord(std::string_view word);

/// `text` as a JSON string with its quotes, which is safe to show, too: control characters become
/// `\uNNNN`. JSON is UTF-8, so each byte that is not becomes U+FFFD.
std::string jsonString(std::string_view text);

} // namespace common
