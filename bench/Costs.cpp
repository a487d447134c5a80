// What each operation costs in instructions and heap allocations, on a service that costs nothing.
// Prints one line an operation: its name and its allocations. Under callgrind it dumps a profile of
// each operation, of the same name, whose sum is its instructions. "direct" is the direct client.

#include <cstdio>

#include <tinyxml.h>
#include <valgrind/callgrind.h>

#include "Heap.h"
#include "LoadModule.h"
#include "Operations.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"
#include "trace/Trace.h"

namespace {

constexpr int kEntries = 1000;
constexpr int kWarmUpCalls = 10; // until symbols are bound and the allocator's lists filled

template <typename Call> void measure(const char* name, Call call) {
    for (int i = 0; i < kWarmUpCalls; ++i) {
        call();
    }
    const std::size_t before = bench::heap().allocations;
    CALLGRIND_ZERO_STATS;
    call();
    CALLGRIND_DUMP_STATS_AT(name);
    std::printf("%s\t%zu\n", name, bench::heap().allocations - before);
}

constexpr char kTraceUnit[] = "costs";

} // namespace

int main() {
    {
        bench::heap().counting = !RUNNING_ON_VALGRIND; // counting costs instructions
        const auto adapter = bench::makeAdapter();
        const bench::DirectSession session;
        for (const bench::Operation& operation : bench::operations()) {
            measure(operation.name, [&] { operation.call(*adapter); });
        }
        // The plainest alarm that a client raises: no additional information, no program group.
        const std::string object = "managedElement=1,equipment=1,board=3";
        const std::string text = "The board's temperature is above its limit";
        const std::string uuid = "7d1e9a04-53c2-5f0b-8c6e-1b2f4a9d3e77";
        const std::string computeName = "compute-1";
        const std::vector<std::string> none;
        measure("raisePrimaryAlarm/plain", [&] {
            adapter->raisePrimaryAlarm(object, 50, text, text, none, 2, uuid, uuid, computeName);
        });
        const bench::Operation& cease = bench::operations().back();
        measure("direct/primary", [&] { bench::primaryAlarm().sendDirectly(session.get()); });
        measure("direct/cease", [&] { cease.sendDirectly(session.get()); });
        const dolq::TraceObject traceObject("costs");
        measure("trace/gate", [&] { DOLQ_TRACE(traceObject, dolq::kFlow, "text:%s", "text"); });
    }
    ruxa::fm::dolq::v1::freeFmiFactory();
    const bench::LoadModule loadModule(kEntries);
    measure("load/1000", [] {
        ruxa::fm::dolq::v2::getFmiFactory();
        ruxa::fm::dolq::v2::freeFmiFactory();
    });
    measure("load/1000/tinyxml", [&] { TiXmlDocument(loadModule.mappingFile()).LoadFile(); });
    return 0;
}
