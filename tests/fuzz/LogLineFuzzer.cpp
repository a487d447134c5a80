// A line of the notification log of any content. What reads as a notification is the same after it
// was written and read once more.

#include "Fuzzing.h"
#include "platform/ntf/log/AlarmRecord.h"

using platform::ntf::ParsedLine;
using platform::ntf::parseLine;
using platform::ntf::toLine;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ParsedLine parsed = parseLine({reinterpret_cast<const char*>(data), size});
    require(parsed.reason.empty() == (parsed.kind == ParsedLine::Kind::Notification),
            "a reason for all but notifications");
    if (parsed.kind == ParsedLine::Kind::Notification) {
        const std::string line = toLine(parsed.record);
        require(line.find('\n') == line.size() - 1, "a notification is one line");
        const ParsedLine again = parseLine(line);
        require(again.kind == ParsedLine::Kind::Notification, "what was written can be read");
        require(toLine(again.record) == line, "nothing changes on the way");
    }
    return 0;
}
