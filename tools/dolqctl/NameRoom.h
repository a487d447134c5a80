#pragma once

#include <saNtf.h>

namespace dolqctl {

/// Whether the service gives the names of a notification the room that this program and the library
/// take them to have. A client library built with the stock length of 256 does not, and a sender
/// would write past its memory.
enum class NameRoom {
    Enough,
    TooSmall,
    Unknown ///< the memory is no block of the heap of its own
};

/// Of the two names of an allocated notification. Reads and writes nothing in them.
NameRoom roomOf(const SaNameT* notificationObject, const SaNameT* notifyingObject);

} // namespace dolqctl
