// The caller's cost of each operation against the direct client, and of many threads at once. Built
// twice: on the embedded NTF service, and on one that costs nothing.

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "Operations.h"
#include "Timing.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"

namespace {

using bench::cpuSecondsOf;
using bench::median;
using bench::secondsOf;

constexpr int kCallsPerSample = 20;
constexpr int kSamples = 2000;
constexpr int kCallsPerThread = BENCH_CALLS_PER_THREAD;
constexpr int kMostThreads = 8;

/// The embedded service's log would fill the disk.
void emptyNotificationLog() {
    if (const char* const log = std::getenv("RUXA_NTF_LOG")) {
        std::error_code ignored; // of a log that nothing was written to yet
        std::filesystem::resize_file(log, 0, ignored);
    }
}

/// Library and direct client take turns, so that whatever else the machine does meets both alike.
void alternate(benchmark::State& state, const bench::Operation& operation) {
    const auto adapter = bench::makeAdapter();
    const bench::DirectSession session;
    std::vector<double> library;
    std::vector<double> direct;
    const auto callLibrary = [&] {
        for (int i = 0; i < kCallsPerSample; ++i) {
            operation.call(*adapter);
        }
    };
    const auto callDirectly = [&] {
        for (int i = 0; i < kCallsPerSample; ++i) {
            if (operation.sendDirectly(session.get()) != SA_AIS_OK) {
                std::fprintf(stderr, "the NTF service refuses an alarm\n");
                std::abort();
            }
        }
    };
    for (auto _ : state) {
        const bool libraryFirst = library.size() % 2 == 0;
        const double first = libraryFirst ? cpuSecondsOf(callLibrary) : cpuSecondsOf(callDirectly);
        const double second = libraryFirst ? cpuSecondsOf(callDirectly) : cpuSecondsOf(callLibrary);
        library.push_back(libraryFirst ? first : second);
        direct.push_back(libraryFirst ? second : first);
        state.SetIterationTime(library.back());
    }
    const double libraryNs = median(library) / kCallsPerSample * 1e9;
    const double directNs = median(direct) / kCallsPerSample * 1e9;
    state.counters["library_ns"] = libraryNs;
    state.counters["direct_ns"] = directNs;
    state.counters["ratio"] = libraryNs / directNs;
    emptyNotificationLog();
}

template <typename Call> double slowestOf(int calls, Call call) {
    double slowest = 0;
    for (int i = 0; i < calls; ++i) {
        slowest = std::max(slowest, secondsOf(call));
    }
    return slowest;
}

/// All threads raise primary alarms at once; `direct`: through the direct client.
void raiseAtOnce(benchmark::State& state, bool direct) {
    const auto threadCount = static_cast<std::size_t>(state.range(0));
    double slowest = 0;
    for (auto _ : state) {
        std::atomic<std::size_t> ready{0};
        std::array<double, kMostThreads> slowestOfThread{};
        std::vector<std::thread> threads;
        std::atomic<bool> go{false};
        for (std::size_t i = 0; i < threadCount; ++i) {
            threads.emplace_back([&, i] {
                {
                    const auto adapter = bench::makeAdapter();
                    const bench::DirectSession session;
                    const bench::Operation& alarm = bench::primaryAlarm();
                    ++ready;
                    while (!go) {
                        std::this_thread::yield();
                    }
                    slowestOfThread[i] =
                        direct
                            ? slowestOf(kCallsPerThread, [&] { alarm.sendDirectly(session.get()); })
                            : slowestOf(kCallsPerThread, [&] { alarm.call(*adapter); });
                }
                ruxa::fm::dolq::v1::freeFmiFactory();
            });
        }
        while (ready != threadCount) {
            std::this_thread::yield();
        }
        state.SetIterationTime(secondsOf([&] {
            go = true;
            for (std::thread& thread : threads) {
                thread.join();
            }
        }));
        slowest =
            std::max(slowest, *std::max_element(slowestOfThread.begin(), slowestOfThread.end()));
        emptyNotificationLog();
    }
    state.counters["alarms_per_s"] =
        benchmark::Counter(static_cast<double>(threadCount) * kCallsPerThread *
                               static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate);
    state.counters["slowest_us"] = slowest * 1e6;
}

} // namespace

int main(int argc, char** argv) {
    for (const bench::Operation& operation : bench::operations()) {
        benchmark::RegisterBenchmark(
            (std::string("operation/") + operation.name).c_str(),
            [&operation](benchmark::State& state) { alternate(state, operation); })
            ->UseManualTime()
            ->Iterations(kSamples);
    }
    for (const bool direct : {false, true}) {
        benchmark::RegisterBenchmark(
            direct ? "threads/direct" : "threads/library",
            [direct](benchmark::State& state) { raiseAtOnce(state, direct); })
            ->RangeMultiplier(2)
            ->Range(1, kMostThreads)
            ->UseManualTime()
            ->Iterations(10);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    ruxa::fm::dolq::v1::freeFmiFactory();
    return 0;
}
