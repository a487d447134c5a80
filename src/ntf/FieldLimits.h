#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <saNtf.h>

namespace dolq {

// How much of each field a notification carries. The sizes given to the service and the copies into
// its memory come from these functions alone, so that they agree whatever the client gave.

/// The bytes that are sent of a text, with the terminating NUL: all of it, or as many whole UTF-8
/// characters as a 16-bit size can express.
std::uint16_t sentSize(const std::string& text);

/// How many entries of a list are sent.
std::uint16_t sentCount(const std::vector<std::string>& list);

/// Fills `size` bytes, of which there is at least one, with the beginning of `text` and a NUL.
void copyText(const std::string& text, std::uint16_t size, char* destination);

/// Copies up to 599 bytes of `text` and fills the rest of the name with NUL bytes.
void copyName(const std::string& text, SaNameT& name);

} // namespace dolq
