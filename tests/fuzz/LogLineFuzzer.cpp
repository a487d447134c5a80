// A line of the notification log of any content. What reads as a notification could be sent, and is
// the same after it was written and read once more.

#include "Fuzzing.h"
#include "platform/ntf/AlarmNotification.h"

using platform::ntf::AlarmNotification;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (const auto read = AlarmNotification::ofLine({reinterpret_cast<const char*>(data), size})) {
        require(read->isValid(), "what was read can be sent");
        const std::string line = read->toLine();
        require(line.find('\n') == line.size() - 1, "a notification is one line");
        const auto again = AlarmNotification::ofLine(line);
        require(again != nullptr, "what was written can be read");
        const auto withoutThread = [](const std::string& text) {
            return text.substr(0, text.rfind(",\"processId\""));
        };
        require(withoutThread(again->toLine()) == withoutThread(line),
                "nothing changes on the way");
    }
    return 0;
}
