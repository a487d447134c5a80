#include "trace/TraceObject.h"

#include "ruxa/trace/v2/TraceBackend.h"

namespace dolq {

using ruxa::trace::v2::TraceBackend;

TraceObject::TraceObject(const char* suffix, UntilRegistered initially) {
    if (initially == UntilRegistered::DefaultObject) {
        m_handle = TraceBackend::getDefaultTraceObject();
    }
    m_handle = TraceBackend::registerTraceObject(TraceBackend::getTraceObjectPrefix() + suffix);
}

TraceObject::~TraceObject() {
    try {
        TraceBackend::deregisterTraceObject(m_handle);
        m_handle = TraceBackend::getDefaultTraceObject();
    } catch (...) { // a backend that runs out of memory here must not end the process
    }
}

} // namespace dolq
