#include "trace/TraceObject.h"

#include "common/CancellationHeld.h"
#include "ruxa/trace/v2/TraceBackend.h"

namespace dolq {

using ruxa::trace::v2::TraceBackend;

TraceObject::TraceObject(const char* suffix, UntilRegistered initially) {
    if (initially == UntilRegistered::DefaultObject) {
        m_handle = TraceBackend::getDefaultTraceObject();
    }
    m_handle = TraceBackend::registerTraceObject(TraceBackend::getTraceObjectPrefix() + suffix);
}

// The handle falls back to the default object, so that it is valid whatever looks at it last. A
// backend that throws here ends the process, for no destructor lets an exception out.
TraceObject::~TraceObject() {
    const common::CancellationHeld held;
    TraceBackend::deregisterTraceObject(m_handle);
    m_handle = TraceBackend::getDefaultTraceObject();
}

} // namespace dolq
