#pragma once

#include <cstdint>
#include <string>

/// A static probe (USDT) of the provider "ruxa_dolq", for tools such as bpftrace and gdb: a name,
/// then its values. It costs one no-op until a tool attaches to it, and nothing in a build without
/// RUXA_DOLQ_PROBES.
#ifdef RUXA_DOLQ_PROBES
#define SDT_USE_VARIADIC
#include <sys/sdt.h>
#ifdef __clang__ // warns of sdt.h's macros wherever a probe stands
#pragma clang diagnostic ignored "-Wgnu-zero-variadic-macro-arguments"
#endif
#define DOLQ_PROBE(...) STAP_PROBEV(ruxa_dolq, __VA_ARGS__)
#else
#define DOLQ_PROBE(...) static_cast<void>(0)
#endif

namespace dolq {

/// The probes at the start and the end of one alarm, whatever the way out.
class AlarmProbe {
public:
    AlarmProbe(const std::string& notificationObject, std::uint32_t faultId)
        : m_object(notificationObject.c_str()), m_faultId(faultId) {
        DOLQ_PROBE(alarm_start, m_object, m_faultId);
    }
    ~AlarmProbe() { DOLQ_PROBE(alarm_end, m_object, m_faultId); }
    AlarmProbe(const AlarmProbe&) = delete;
    AlarmProbe& operator=(const AlarmProbe&) = delete;

private:
    [[maybe_unused]] const char* m_object;
    [[maybe_unused]] std::uint32_t m_faultId;
};

} // namespace dolq
