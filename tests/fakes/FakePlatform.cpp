#include "FakePlatform.h"

#include <cctype>
#include <memory>

namespace {

std::unique_ptr<FakePlatform> g_platform = std::make_unique<FakePlatform>();

} // namespace

thread_local int PlatformCode::t_depth = 0;

FakePlatform& platform() { return *g_platform; }

void resetPlatform() { g_platform = std::make_unique<FakePlatform>(); }

void FakePlatform::record(const std::string& event) {
    const PlatformCode here;
    const std::lock_guard<std::mutex> lock(mutex);
    events.push_back(event);
}

void FakePlatform::called(const std::string& function) {
    const auto hook = onCall.find(function);
    if (hook != onCall.end()) {
        hook->second();
    }
}

SaAisErrorT FakePlatform::resultOf(const std::string& function) {
    const PlatformCode here;
    called(function);
    const std::lock_guard<std::mutex> lock(mutex);
    std::deque<SaAisErrorT>& scripted = results[function];
    if (scripted.empty()) {
        return SA_AIS_OK;
    }
    const SaAisErrorT result = scripted.front();
    scripted.pop_front();
    return result;
}

std::vector<std::string> FakePlatform::traces(int group) const {
    const std::string prefix = std::to_string(group) + ' ';
    std::vector<std::string> found;
    for (const std::string& event : events) {
        if (event.rfind(prefix, 0) == 0) {
            found.push_back(event.substr(prefix.size()));
        }
    }
    return found;
}

std::vector<std::string> FakePlatform::calls() const {
    std::vector<std::string> found;
    for (const std::string& event : events) {
        if (std::isdigit(static_cast<unsigned char>(event.front())) == 0) { // no trace
            found.push_back(event);
        }
    }
    return found;
}

bool FakePlatform::holdsNothing() const {
    return traceObjects.empty() && sessions.empty() && openNotifications == 0 &&
           openLoadModuleLists == 0 && overruns == 0 && misusedTraceObjects == 0;
}
