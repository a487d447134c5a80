#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include <saNtf.h>
#include <sys/types.h>

/// While one lives, this thread runs code of the fakes themselves: what they allocate is no concern
/// of a test that lets the library's allocations fail.
class PlatformCode {
public:
    PlatformCode() { ++t_depth; }
    ~PlatformCode() { --t_depth; }
    PlatformCode(const PlatformCode&) = delete;
    PlatformCode& operator=(const PlatformCode&) = delete;
    static bool isRunning() { return t_depth != 0; }

private:
    static thread_local int t_depth;
};

/// The whole platform as the library sees it, replaced at link time. Answers are scripted here
/// before a call, and everything that leaves the library is recorded here, in order.
struct FakePlatform {
    struct LoadModule {
        std::string productNumber;
        std::string revision;
        std::vector<std::pair<std::string, std::string>> files; // tag, path
    };

    /// One notification as it was when the library sent it.
    struct Alarm {
        std::string object;
        std::string notifyingObject;
        std::uint32_t severity = 0;
        std::uint32_t vendorId = 0;
        std::uint32_t majorId = 0;
        std::uint32_t minorId = 0;
        std::string additionalText;
        std::vector<std::string> additionalInfo;
        std::vector<std::string> repairActions;
        const char* eventTime = ""; // as-allocated, unknown or wrong
        /// The values that every alarm has in common: event type, probable cause, trend, threshold.
        std::vector<int> constants;
    };

    // What the platform answers.
    std::set<int> enabledGroups{0, 4, 8};
    std::map<std::string, std::deque<SaAisErrorT>> results; // by function; SA_AIS_OK once used up
    std::map<std::string, std::function<void()>> onCall;    // by function; may throw
    bool correlationService = true;
    std::set<std::uint32_t> underivableEvents;
    std::string leftByFailedDerivation;
    std::set<std::uint32_t> eventsWithEmptyUUID;
    std::map<std::string, std::vector<LoadModule>> loadModules; // by category
    std::map<std::string, int> loadModuleErrors;                // by category
    bool nullTextsInLoadModules = false;
    std::deque<ssize_t> reads; // the most that each read() of a file gives; negative: errno

    // What left the library. A trace is "<group> <unit>|<text>", a call its name and arguments.
    std::vector<std::string> events;
    std::vector<Alarm> sent;
    int formattedTexts = 0;

    // What it holds.
    std::map<void*, std::string> traceObjects;
    std::set<SaNtfHandleT> sessions;
    int openNotifications = 0;
    int openLoadModuleLists = 0;
    int overruns = 0;            // guard zones found damaged
    int misusedTraceObjects = 0; // asked for a group without being registered

    std::mutex mutex;

    void record(const std::string& event);
    void called(const std::string& function);
    SaAisErrorT resultOf(const std::string& function);
    std::vector<std::string> traces(int group) const;
    std::vector<std::string> calls() const;
    bool holdsNothing() const;
};

FakePlatform& platform();
void resetPlatform();
