#include "platform/ntf/ServiceMutex.h"

#include <pthread.h>

namespace platform::ntf {

std::mutex serviceMutex;

namespace {

[[maybe_unused]] const int kForkHandlers = pthread_atfork(
    [] { serviceMutex.lock(); }, [] { serviceMutex.unlock(); }, [] { serviceMutex.unlock(); });

} // namespace

} // namespace platform::ntf
