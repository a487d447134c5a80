// The lookup of a fault's alarm. A lookup fails more often because the mapping files are wrong than
// because a fault is unknown, so its traces tell what the table has for the fault.

#include "mapping/dolqNotificationMapImpl.h"

#include <unistd.h>

#include "common/Environment.h"
#include "mapping/ConfigurationParserFactory.h"
#include "threadSpecificSingleton"
#include "trace/Trace.h"

namespace dolq {

namespace {

constexpr char kTraceUnit[] = "dolqNotificationMapImpl";

/// OtherClass: the table has entries of the fault, but none for the class.
enum class Lookup { Match, OtherClass, NoEntry };

// What the texts below call a thread is the process id. Operators look for that number and for
// these texts.

/// The lookup that both generations share: walks the table from its first entry to the exact match
/// or to the end. Only a match writes `minorType`. The walk neither jumps to the fault id's entries
/// nor stops behind them, so that an unknown fault costs what the last one of the table costs.
Lookup findMinorType(const MappingTable& mapping, const TraceObject& traceObject,
                     std::uint32_t faultId, std::uint32_t& minorType, const std::string& moClass) {
    DOLQ_TRACE(traceObject, kFlow, "Calling getMinorType in thread: %d.", getpid());
    const MappingTable::Entry* single = nullptr; // the one entry of the fault, as long as it is one
    bool anyEntry = false;
    for (const MappingTable::Block& block : mapping.blocks()) {
        for (const MappingTable::Entry& entry : block) {
            if (entry.faultId != faultId) {
                continue;
            }
            if (entry.moClass == moClass) {
                minorType = entry.minorType;
                return Lookup::Match;
            }
            if (anyEntry) {
                DOLQ_TRACE(
                    traceObject, kDetail,
                    "dolq::NotificationMap::getMinorType, found multiple matches for faultId: %d in thread: %d.",
                    faultId, getpid());
                single = nullptr;
            } else {
                single = &entry;
            }
            anyEntry = true;
        }
    }
    if (single != nullptr) {
        // The class shown is that of the table, for the mapping is what has to be corrected.
        DOLQ_TRACE(
            traceObject, kDetail,
            " Got no full match of faultId and moClass, but found a single faultId. faultId: %d, moClass: \"%s\", foundMinorType: %d.",
            faultId, single->moClass.c_str(), single->minorType);
        DOLQ_TRACE(
            traceObject, kFailure,
            "Found no matching alarm for faultId: %d and moClass: \"%s\", check the alarm mapping configuration.",
            faultId, single->moClass.c_str());
    }
    return anyEntry ? Lookup::OtherClass : Lookup::NoEntry;
}

void traceNoMatch(const TraceObject& traceObject, std::uint32_t faultId) {
    // ZBN_NUM, although ZBN_NO chooses the load module: operators of nodes that set it look for its
    // value here.
    DOLQ_TRACE(traceObject, kDetail,
               "Found no match for faultId: %d in Load Module: %s, Rev:%s, ThreadId: %d", faultId,
               common::environment("ZBN_NUM"), common::environment("ZBN_REV"), getpid());
}

} // namespace

// The generations differ in when a failed lookup leaves the closing trace: v1 always, v2 only when
// the table has no entry of the fault at all.

bool NotificationMap::getMinorType(std::uint32_t faultId, std::uint32_t& minorType,
                                   const std::string& moClass) {
    const Lookup lookup = findMinorType(m_mapping, m_traceObject, faultId, minorType, moClass);
    if (lookup != Lookup::Match) {
        traceNoMatch(m_traceObject, faultId);
    }
    return lookup == Lookup::Match;
}

bool NotificationMapV2::getMinorType(std::uint32_t faultId, std::uint32_t& minorType,
                                     const std::string& moClass) {
    const Lookup lookup = findMinorType(m_mapping, m_traceObject, faultId, minorType, moClass);
    if (lookup == Lookup::NoEntry) {
        traceNoMatch(m_traceObject, faultId);
    }
    return lookup == Lookup::Match;
}

NotificationMapV2::NotificationMapV2(const MappingTable& mapping) {
    m_mapping = mapping; // only now: the trace object is registered before the table is copied
}

void NotificationMap::setMapping(std::uint32_t faultId, std::uint32_t minorType) {
    DOLQ_TRACE(m_traceObject, kDetail, "Setmapping: faultId:%u, minorType:%u", faultId, minorType);
    DOLQ_TRACE(
        m_traceObject, kFailure,
        "This method is deprecated and replaced by setMapping(faultId, minorType, ManagedObjectClass).");
    m_mapping.set(faultId, minorType, "");
}

void NotificationMap::setMapping(std::uint32_t faultId, std::uint32_t minorType,
                                 const std::string& moClass) {
    m_mapping.set(faultId, minorType, moClass);
}

void NotificationMap::configurationFile(const std::string& fileName) {
    using Slot = cxxutils::threadspecific::v1::ThreadSpecificSingleton<ConfigurationParserFactory>;
    DOLQ_TRACE(m_traceObject, kDetail, "ConfigurationFile: fileName:%s", fileName.c_str());
    const std::shared_ptr<ConfigurationParserI> parser =
        Slot::getInstance()->createParser(fileName);
    if (parser != nullptr) { // without one the table stays as it is
        parser->parse(*this);
    }
}

} // namespace dolq
