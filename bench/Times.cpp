// The caller's time of each operation through the library and through the direct client, of reading
// mapping files and of lookups. Prints a line each: name, nanoseconds, those that it is compared
// with, ratio. Built twice: on the embedded NTF service, and on one that costs nothing.

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include <tinyxml.h>

#include "LoadModule.h"
#include "Operations.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"

namespace {

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

/// The two take turns, so that whatever else the machine does meets both alike.
template <typename Call, typename Other>
void compare(const std::string& name, int samples, int calls, Call call, Other other) {
    std::vector<double> own;
    std::vector<double> others;
    for (int i = 0; i < samples; ++i) {
        own.push_back(nanosecondsOf(calls, call));
        others.push_back(nanosecondsOf(calls, other));
    }
    std::printf("%s\t%.0f\t%.0f\t%.3f\n", name.c_str(), median(own), median(others),
                median(own) / median(others));
}

void compareOperations() {
    const auto adapter = bench::makeAdapter();
    const SaNtfHandleT session = bench::openSession();
    for (const bench::Operation& operation : bench::operations()) {
        compare(
            operation.name, 2000, 20, [&] { operation.call(*adapter); },
            [&] { operation.sendDirectly(session); });
    }
}

/// All that a thread's first call does, against a bare parse of the file.
void compareReading() {
    for (const int entries : {1000, 100'000}) {
        const std::string file = bench::makeLoadModule(entries);
        compare(
            "read/" + std::to_string(entries), 1'000'000 / entries, 1,
            [] {
                ruxa::fm::dolq::v2::getFmiFactory();
                ruxa::fm::dolq::v2::freeFmiFactory();
            },
            [&] { TiXmlDocument(file).LoadFile(); });
    }
    setenv("ZBN_NO", "none", 1);
}

/// A cease of an alarm without mapping, which walks the whole table.
double lookUp(std::uint32_t entries) {
    const auto adapter = bench::makeAdapter(entries);
    std::vector<double> times;
    for (int i = 0; i < 500; ++i) {
        times.push_back(nanosecondsOf(1, [&] { adapter->ceaseAlarm("board=3", 0, ""); }));
    }
    return median(times);
}

} // namespace

int main() {
    compareReading();
    compareOperations();
    ruxa::fm::dolq::v1::freeFmiFactory();
    const double few = lookUp(10);
    ruxa::fm::dolq::v1::freeFmiFactory();
    std::printf("lookup, an entry of 100000\t%.3f\t-\t-\n", (lookUp(100'000) - few) / 100'000);
    ruxa::fm::dolq::v1::freeFmiFactory();
    return 0;
}
