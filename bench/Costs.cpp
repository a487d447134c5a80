// What each operation costs through the library and through the direct client, and the reading of
// mapping files beside a bare parse. Built twice: on an NTF service that costs nothing and on the
// embedded one. Prints one line each: its name and its heap allocations. Under callgrind it dumps a
// profile of each, of the same name, whose sum is its instructions. With any argument it measures
// the caller's time instead: name, nanoseconds, those that it is compared with, ratio.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>
#include <string>
#include <vector>

#include <tinyxml.h>
#include <valgrind/callgrind.h>

#include "Operations.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"

namespace {

constexpr int kWarmUpCalls = 10; // until symbols are bound and the allocator's lists filled

bool isTimed = false;
std::size_t allocations = 0;

template <typename Call> void count(const std::string& name, Call call) {
    for (int i = 0; i < kWarmUpCalls; ++i) {
        call();
    }
    const std::size_t before = allocations;
    CALLGRIND_ZERO_STATS;
    call();
    CALLGRIND_DUMP_STATS_AT(name.c_str());
    std::printf("%s\t%zu\n", name.c_str(), allocations - before);
}

/// Of the calling thread's processor time, which leaves out what other programs take.
template <typename Call> double nanosecondsOf(int calls, Call call) {
    const auto now = [] {
        std::timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
    };
    const double begin = now();
    for (int i = 0; i < calls; ++i) {
        call();
    }
    return (now() - begin) / calls;
}

/// Unlike the mean it leaves out what the machine did in between.
double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template <typename Call, typename Other>
void compare(const std::string& name, Call call, const char* otherName, Other other, int samples,
             int calls) {
    if (!isTimed) {
        count(name, call);
        count(name + otherName, other);
        return;
    }
    std::vector<double> own;
    std::vector<double> others;
    for (int i = 0; i < samples; ++i) { // in turns: what else the machine does meets both alike
        own.push_back(nanosecondsOf(calls, call));
        others.push_back(nanosecondsOf(calls, other));
    }
    std::printf("%s\t%.0f\t%.0f\t%.3f\n", name.c_str(), median(own), median(others),
                median(own) / median(others));
}

/// All that a thread's first call does.
void compareReading(int entries) {
    const std::string file = bench::makeLoadModule(entries);
    const auto load = [] {
        ruxa::fm::dolq::v2::getFmiFactory();
        ruxa::fm::dolq::v2::freeFmiFactory();
    };
    compare(
        "load/" + std::to_string(entries), load, "/tinyxml",
        [&] { TiXmlDocument(file).LoadFile(); }, 1'000'000 / entries, 1);
}

void compareOperations() {
    const auto adapter = bench::makeAdapter();
    const SaNtfHandleT session = bench::openSession();
    for (const bench::Operation& operation : bench::operations()) {
        compare(
            operation.name, [&] { operation.call(*adapter); }, "/direct",
            [&] { operation.sendDirectly(session); }, 2000, 20);
    }
}

/// A cease of an alarm without mapping, which walks the whole table.
double lookUp(std::uint32_t entries) {
    ruxa::fm::dolq::v1::freeFmiFactory();
    const auto adapter = bench::makeAdapter(entries);
    std::vector<double> times;
    for (int i = 0; i < 500; ++i) {
        times.push_back(nanosecondsOf(1, [&] { adapter->ceaseAlarm("board=3", 0, ""); }));
    }
    return median(times);
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

int main(int argc, char**) {
    isTimed = argc > 1;
    compareReading(1000);
    if (isTimed) {
        compareReading(100'000);
    }
    setenv("ZBN_NO", "none", 1); // the table then holds what makeAdapter sets
    compareOperations();
    if (isTimed) {
        const double few = lookUp(10);
        std::printf("lookup, an entry of 100000\t%.3f\t-\t-\n", (lookUp(100'000) - few) / 100'000);
    }
    ruxa::fm::dolq::v1::freeFmiFactory();
    return 0;
}
