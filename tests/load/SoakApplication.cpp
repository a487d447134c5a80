#include "SoakApplication.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <malloc.h>
#include <unistd.h>

#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"
#include "support/TestSupport.h"

namespace {

namespace v1 = ruxa::fm::dolq::v1;
namespace v2 = ruxa::fm::dolq::v2;
using ruxa::fm::fmi::v1::FaultManagementI;

constexpr std::size_t kHeapPlay =
    8 * 1024; // what glibc keeps with the stacks of ended threads, for instance

void raise(FaultManagementI& adapter, const std::string& object, Dice& dice) {
    const std::string text(dice.below(dice.oneOf(16) ? 12000 : 100), 'x'); // seldom several pages
    switch (dice.below(4)) {
    case 0:
        return adapter.ceaseAlarm(object, 7, "fault");
    case 1:
        return adapter.raisePrimaryAlarm(object, 7, "fault", text, {"first", "", "second"}, 2,
                                         4711U, "system", "compute", 3);
    case 2:
        return adapter.raiseSecondaryAlarm(object, 7, "fault", text, {}, 1, "system", "compute",
                                           std::vector<std::string>{"uuid-1", "uuid-2"});
    default:
        return adapter.raiseAlarm(object, 7, "fault", text, {"entry"}, 4, 0, {1, 2, 3});
    }
}

/// The life of a thread, which raises alarms through `shared` or, if that is null, its own adapter.
void raiseAlarms(Ledger& ledger, std::uint64_t seed, FaultManagementI* shared, bool frees) {
    Dice dice(seed);
    const unsigned number = ledger.threads++;
    Ledger::Thread& progress = ledger.of.at(number);
    std::shared_ptr<FaultManagementI> own;
    if (shared == nullptr && dice.oneOf(2)) {
        own.reset(v1::getFmiFactory()->createFaultManagement());
    } else if (shared == nullptr) {
        own = v2::getFmiFactory()->createFaultManagement();
    }
    for (unsigned count = dice.below(100); count > 0; --count) {
        raise(own ? *own : *shared, alarmName(number, ++progress.begun), dice);
        ++progress.done;
        if (dice.oneOf(16)) {
            usleep(dice.below(2000));
        }
    }
    own.reset();
    if (frees) {
        v1::freeFmiFactory();
        v2::freeFmiFactory();
    }
}

/// A few threads and children come and go; with `exits`, the process goes first.
void liveADay(Ledger& ledger, Dice& dice, bool frees, bool exits) {
    std::shared_ptr<FaultManagementI> shared = v2::getFmiFactory()->createFaultManagement();
    std::vector<std::thread> threads(2 + dice.below(6));
    for (std::thread& thread : threads) {
        thread = std::thread(raiseAlarms, std::ref(ledger), dice(),
                             dice.oneOf(3) ? shared.get() : nullptr, frees || dice.oneOf(2));
    }
#ifdef __SANITIZE_ADDRESS__
    std::vector<pid_t> children; // they may inherit a locked mutex of its runtime's allocator
#else
    std::vector<pid_t> children(dice.below(3));
#endif
    for (pid_t& child : children) {
        const std::uint64_t seed = dice();
        usleep(dice.below(3000));
        ++ledger.forks;
        child = fork();
        if (child == 0) {
            alarm(kLongestLife);
            raiseAlarms(ledger, seed, nullptr, false);
            _exit(0);
        }
    }
    if (exits) {
        ++ledger.exits;
        std::exit(0); // main may return at any time
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    shared.reset();
    v2::freeFmiFactory();
    for (const pid_t child : children) {
        if (const int status = statusOf(child); status != 0) {
            std::fprintf(stderr, "a forked child ended with status 0x%x\n", status);
            _exit(1);
        }
    }
}

/// 0 under sanitizers, which have allocators of their own.
std::size_t heapInUse() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

/// Up to ten faults, most of them early.
std::string faultSchedule(Dice& dice) {
    constexpr const char* kFaults[] = {
        "send:TRY_AGAIN",   "send:NO_RESOURCES",  "send:OK,delay=20",     "allocate:TRY_AGAIN",
        "allocate:LIBRARY", "value:NO_MEMORY",    "value:TRY_AGAIN",      "free:LIBRARY",
        "free:TRY_AGAIN",   "initialize:LIBRARY", "initialize:TRY_AGAIN", "finalize:TRY_AGAIN"};
    std::string schedule;
    for (unsigned count = dice.below(10); count > 0; --count) {
        schedule += kFaults[dice.below(std::size(kFaults))];
        schedule += ",after=" + std::to_string(dice.below(1U << dice.below(12))) +
                    ",times=" + std::to_string(1 + dice.below(5)) + "; ";
    }
    return schedule;
}

} // namespace

void runApplication(Ledger& ledger, Dice dice) {
    alarm(kLongestLife);
    std::signal(SIGHUP, SIG_IGN); // Linux may send it to stopped children of who is killed
    mallopt(M_ARENA_MAX, 1);      // each further one would count as heap in use
    setenv("RUXA_NTF_FAULTS", faultSchedule(dice).c_str(), 1);
    const bool frees = dice.oneOf(2); // every factory
    const bool exits = frees && dice.oneOf(2);
    std::size_t descriptors = 0;
    std::size_t heap = 0;
    const unsigned days = 2 + dice.below(8);
    for (unsigned day = 0; day < days; ++day) {
        // On a thread that ends, too: what it has freed counts as in use while it may come back.
        std::thread([&] { liveADay(ledger, dice, frees, exits && day + 1 == days); }).join();
        for (int wait = 0; wait < 10000 && entriesIn("/proc/self/task") > 1; ++wait) {
            usleep(1000); // a joined thread may be on its way out of the kernel still
        }
        if (day == 0) {
            descriptors = entriesIn("/proc/self/fd");
            heap = heapInUse();
        } else if (entriesIn("/proc/self/task") != 1 || entriesIn("/proc/self/fd") != descriptors ||
                   (frees && heapInUse() > heap + kHeapPlay)) {
            std::fprintf(
                stderr,
                "%u days leave %zu threads; descriptors: %zu, then %zu; heap: %zu, then %zu bytes\n",
                day, entriesIn("/proc/self/task"), descriptors, entriesIn("/proc/self/fd"), heap,
                heapInUse());
            _exit(1);
        }
    }
    if (frees) {
        std::exit(0);
    }
    _exit(0); // a leak checker would find the factories that were meant to stay
}
