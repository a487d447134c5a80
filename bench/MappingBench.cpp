// Loading mapping files against bare TinyXML, start-up of many threads, and the lookup by table
// size.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <tinyxml.h>

#include "Heap.h"
#include "LoadModule.h"
#include "Timing.h"
#include "mapping/dolqNotificationMapImpl.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"
#include "xmlconf/dolqXmlConfigurator.h"

namespace {

using bench::cpuSecondsOf;
using bench::median;

constexpr int kFirstSize = 10;
constexpr int kLastSize = 100000;
constexpr std::uint32_t kUnknownFault = 0;
constexpr char kClass[] = "board";

[[noreturn]] void fail(const char* what, const std::string& file) {
    std::fprintf(stderr, "%s %s\n", what, file.c_str());
    std::abort();
}

void parseBarely(const std::string& file) {
    TiXmlDocument document(file);
    if (!document.LoadFile(TIXML_ENCODING_UNKNOWN)) {
        fail("TinyXML refuses", file);
    }
}

void read(dolq::xmlconf::MappingXmlConfigurator& reader, const std::string& file) {
    dolq::MappingTable table;
    if (!reader.readMappingFile(file, table)) {
        fail("the library refuses", file);
    }
}

/// All that a thread's first call does.
void makeFactory() {
    ruxa::fm::dolq::v2::getFmiFactory();
    ruxa::fm::dolq::v2::freeFmiFactory();
}

template <typename Call> double peakBytesOf(Call call) {
    bench::heap() = {true};
    call();
    bench::heap().counting = false;
    return static_cast<double>(bench::heap().peakBytes);
}

/// Reading a file into a table takes turns with a bare parse of the same file.
void loadFile(benchmark::State& state) {
    const bench::LoadModule loadModule(static_cast<int>(state.range(0)));
    const std::string file = loadModule.mappingFile();
    dolq::xmlconf::MappingXmlConfigurator reader;
    std::vector<double> library;
    std::vector<double> bare;
    std::vector<double> ratio; // of neighbours in time: a machine's speed drifts
    const auto measureBare = [&] { bare.push_back(cpuSecondsOf([&] { parseBarely(file); })); };
    for (auto _ : state) {
        const bool bareFirst = library.size() % 2 == 1;
        if (bareFirst) {
            measureBare();
        }
        library.push_back(cpuSecondsOf([&] { read(reader, file); }));
        if (!bareFirst) {
            measureBare();
        }
        ratio.push_back(library.back() / bare.back());
        state.SetIterationTime(library.back());
    }
    const double libraryBytes = peakBytesOf([&] { read(reader, file); });
    const double bareBytes = peakBytesOf([&] { parseBarely(file); });
    state.counters["library_us"] = median(library) * 1e6;
    state.counters["tinyxml_us"] = median(bare) * 1e6;
    state.counters["time_ratio"] = median(ratio);
    state.counters["library_kib"] = libraryBytes / 1024;
    state.counters["tinyxml_kib"] = bareBytes / 1024;
    state.counters["memory_ratio"] = libraryBytes / bareBytes;
}
BENCHMARK(loadFile)->RangeMultiplier(10)->Range(kFirstSize, kLastSize)->UseManualTime()->MinTime(4);

/// Threads that get a factory of their own each, over a mapping file of 50 entries.
void startUp(benchmark::State& state) {
    const bench::LoadModule loadModule(50);
    const auto threadCount = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < threadCount; ++i) {
            threads.emplace_back(makeFactory);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
}
BENCHMARK(startUp)->RangeMultiplier(2)->Range(1, 64)->UseRealTime()->Unit(benchmark::kMicrosecond);

enum class Sought { First, Middle, Last, Miss };

/// One lookup in a table of `range` entries, each of a fault of its own.
void lookUp(benchmark::State& state, Sought sought) {
    const auto size = static_cast<std::uint32_t>(state.range(0));
    dolq::MappingTable table;
    for (std::uint32_t faultId = 1; faultId <= size; ++faultId) {
        table.set(faultId, faultId, kClass);
    }
    dolq::NotificationMapV2 map(table);
    const std::string moClass = kClass;
    const std::uint32_t faultIds[] = {1, (size + 1) / 2, size, kUnknownFault};
    const std::uint32_t faultId = faultIds[static_cast<std::size_t>(sought)];
    for (auto _ : state) {
        std::uint32_t minorType = 0;
        benchmark::DoNotOptimize(map.getMinorType(faultId, minorType, moClass));
    }
}
BENCHMARK_CAPTURE(lookUp, first, Sought::First)->RangeMultiplier(10)->Range(kFirstSize, kLastSize);
BENCHMARK_CAPTURE(lookUp, middle, Sought::Middle)
    ->RangeMultiplier(10)
    ->Range(kFirstSize, kLastSize);
BENCHMARK_CAPTURE(lookUp, last, Sought::Last)->RangeMultiplier(10)->Range(kFirstSize, kLastSize);
BENCHMARK_CAPTURE(lookUp, miss, Sought::Miss)->RangeMultiplier(10)->Range(kFirstSize, kLastSize);

} // namespace

BENCHMARK_MAIN();
