#include "IdOption.h"

#include "Output.h"

namespace dolqctl {

namespace {

constexpr char kDigits[] = "0123456789";

} // namespace

std::string checkId(const std::string& text) {
    const bool isHexadecimal = text.size() > 2 && text[0] == '0' &&
                               (text[1] == 'x' || text[1] == 'X') &&
                               text.find_first_not_of("0123456789abcdefABCDEF", 2) == text.npos;
    if (isHexadecimal) {
        return {};
    }
    if (text.empty() || text.find_first_not_of(kDigits) != text.npos) {
        return inQuotes(text) + " is no id: give a number, decimal or hexadecimal with 0x";
    }
    if (text.size() > 1 && text.front() == '0') {
        return inQuotes(text) + " begins with 0: give the id without it, or hexadecimal with 0x";
    }
    return {};
}

} // namespace dolqctl
