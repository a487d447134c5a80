#include "Ntf.h"

#include <memory>

#include "common/AisNames.h"

namespace dolqctl {

NtfError::NtfError(const std::string& call, SaAisErrorT answer)
    : CommandError(call + " answers " + common::aisText(answer) +
                   (common::aisMeaning(answer).empty() ? "" : ": ") +
                   std::string(common::aisMeaning(answer))) {}

Ntf::Ntf(Waiting& waiting) : m_waiting(waiting) {
    auto* const initialize = function<decltype(saNtfInitialize)>("saNtfInitialize");
    const auto handle = std::make_shared<SaNtfHandleT>(0);
    call("saNtfInitialize", [=] {
        SaVersionT version{'A', 1, 1};
        return initialize(handle.get(), nullptr, &version);
    });
    m_handle = *handle;
}

Ntf::~Ntf() {
    try {
        auto* const finalize = function<decltype(saNtfFinalize)>("saNtfFinalize");
        m_waiting.call("saNtfFinalize", [=, handle = m_handle] { return finalize(handle); });
    } catch (const std::exception&) { // what was asked for is known
    }
}

SaNtfAlarmNotificationT Ntf::allocateAlarm() {
    auto* const allocate =
        function<decltype(saNtfAlarmNotificationAllocate)>("saNtfAlarmNotificationAllocate");
    const auto notification = std::make_shared<SaNtfAlarmNotificationT>();
    call("saNtfAlarmNotificationAllocate", [=, handle = m_handle] {
        return allocate(handle, notification.get(), 0, 1, 1, 0, 0, 1, SA_NTF_ALLOC_SYSTEM_LIMIT);
    });
    return *notification;
}

SaAisErrorT Ntf::call(const char* name, const std::function<SaAisErrorT()>& call,
                      SaAisErrorT alsoFine) {
    const SaAisErrorT answer = m_waiting.call(name, call);
    if (answer != SA_AIS_OK && answer != alsoFine) {
        throw NtfError(name, answer);
    }
    return answer;
}

} // namespace dolqctl
