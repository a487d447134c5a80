// A line of the notification log of any content. What reads as a notification is the same after it
// was written and read once more.

#include "Fuzzing.h"
#include "platform/ntf/log/AlarmRecord.h"

using platform::ntf::parseLine;
using platform::ntf::toLine;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (const auto record = parseLine({reinterpret_cast<const char*>(data), size})) {
        const std::string line = toLine(*record);
        require(line.find('\n') == line.size() - 1, "a notification is one line");
        const auto again = parseLine(line);
        require(again.has_value(), "what was written can be read");
        require(toLine(*again) == line, "nothing changes on the way");
    }
    return 0;
}
