#include "platform/trace/Settings.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "common/Escape.h"
#include "common/TraceGroups.h"

namespace platform::trace {

namespace {

constexpr char kGroupsVariable[] = "RUXA_TRACE_GROUPS";
constexpr char kPrefixVariable[] = "RUXA_TRACE_PREFIX";
constexpr std::uint32_t kDefaultGroups = 1u << 0;

} // namespace

std::uint32_t enabledGroups() {
    const char* const value = std::getenv(kGroupsVariable);
    if (value == nullptr) {
        return kDefaultGroups;
    }
    const auto groups = common::parseTraceGroups(value);
    if (!groups) {
        reportUnusedSetting(kGroupsVariable, value,
                            "it must be all, none, or numbers from 0 to 8 joined by commas",
                            "group 0");
    }
    return groups.value_or(kDefaultGroups);
}

std::string traceObjectPrefix() {
    const char* const value = std::getenv(kPrefixVariable);
    return value != nullptr ? value : std::string(program_invocation_short_name) + ".";
}

void reportUnusedSetting(const char* variable, const std::string& value, const std::string& reason,
                         const char* used) {
    std::fprintf(stderr, "ruxa-trace: %s=\"%s\" is not used: %s. Tracing uses %s instead.\n",
                 variable, common::escapedText(value).c_str(), common::escapedText(reason).c_str(),
                 used);
}

} // namespace platform::trace
