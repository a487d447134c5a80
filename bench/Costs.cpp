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
