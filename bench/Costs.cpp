// What each operation costs in instructions and heap allocations, on a service that costs nothing.
// Prints one line an operation: its name and its allocations. Under callgrind it dumps a profile of
// each operation, of the same name, whose sum is its instructions. "direct" is the direct client.

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include <tinyxml.h>
#include <valgrind/callgrind.h>

#include "LoadModule.h"
#include "Operations.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"

namespace {

constexpr int kWarmUpCalls = 10; // until symbols are bound and the allocator's lists filled

std::size_t allocations = 0;

template <typename Call> void measure(const std::string& name, Call call) {
    for (int i = 0; i < kWarmUpCalls; ++i) {
        call();
    }
    const std::size_t before = allocations;
    CALLGRIND_ZERO_STATS;
    call();
    CALLGRIND_DUMP_STATS_AT(name.c_str());
    std::printf("%s\t%zu\n", name.c_str(), allocations - before);
}

} // namespace

// The library's and TinyXML's, too.
void* operator new(std::size_t size) {
    ++allocations;
    void* const block = std::malloc(size);
    return block != nullptr ? block : throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

int main() {
    const std::string file = bench::makeLoadModule(1000);
    measure("load/1000", [] {
        ruxa::fm::dolq::v2::getFmiFactory();
        ruxa::fm::dolq::v2::freeFmiFactory();
    });
    measure("load/1000/tinyxml", [&] { TiXmlDocument(file).LoadFile(); });
    setenv("ZBN_NO", "none", 1); // the table then holds what makeAdapter sets
    {
        const auto adapter = bench::makeAdapter();
        const SaNtfHandleT session = bench::openSession();
        for (const bench::Operation& operation : bench::operations()) {
            measure(operation.name, [&] { operation.call(*adapter); });
            measure(std::string(operation.name) + "/direct",
                    [&] { operation.sendDirectly(session); });
        }
    }
    ruxa::fm::dolq::v1::freeFmiFactory();
    return 0;
}
