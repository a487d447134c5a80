#include "factory/NtfSession.h"

#include "ntf/NtfImpl.h"
#include "ntf/dolqNtfSessionImpl.h"

namespace dolq {

std::shared_ptr<NtfSessionI> makeNtfSession() {
    return std::make_shared<NtfSessionImpl>(std::make_shared<NtfImpl>());
}

} // namespace dolq
