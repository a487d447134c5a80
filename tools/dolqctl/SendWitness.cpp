#include "SendWitness.h"

#include <dlfcn.h>

namespace {

std::optional<SaAisErrorT> latestAnswer;

} // namespace

/// A program's function takes precedence over a library's of the same name, so the library's calls
/// to the service come through here.
[[gnu::visibility("default")]] SaAisErrorT
saNtfNotificationSend(SaNtfNotificationHandleT notificationHandle) {
    using Send = SaAisErrorT (*)(SaNtfNotificationHandleT);
    static const auto send = reinterpret_cast<Send>(dlsym(RTLD_NEXT, "saNtfNotificationSend"));
    latestAnswer = send != nullptr ? send(notificationHandle) : SA_AIS_ERR_LIBRARY;
    return *latestAnswer;
}

namespace dolqctl {

std::optional<SaAisErrorT> latestSendAnswer() { return latestAnswer; }

} // namespace dolqctl
