// What the four shared objects have in common: the fake platform's state. Its script comes from the
// environment, and what it saw is written into a file when the process ends.

#include <cstdlib>
#include <fstream>
#include <string>

#include "FakePlatform.h"

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

class Record {
public:
    Record() {
        platform().enabledGroups = {0, 4};
        platform().loadModules["local"] = {
            {"CXC2", "R2", {{"alarm_mapping", variable("SECOND_PLATFORM_MAPPINGS")}}}};
    }
    ~Record() {
        std::ofstream out(variable("SECOND_PLATFORM_RECORD"));
        // How many; the unit tests look at their order and content.
        out << platform().traces(0).size() << " failure traces, " << platform().traces(4).size()
            << " flow traces\n";
        for (const FakePlatform::Alarm& alarm : platform().sent) {
            out << alarm.object << " severity " << alarm.severity << " class " << alarm.majorId
                << '/' << alarm.minorId << " text '" << alarm.additionalText << '\'';
            for (const std::string& info : alarm.additionalInfo) {
                out << " info " << info;
            }
            out << " time " << alarm.eventTime << '\n';
        }
        out << (platform().holdsNothing() ? "all" : "not all") << " given back\n";
    }
};

const Record record;

} // namespace
