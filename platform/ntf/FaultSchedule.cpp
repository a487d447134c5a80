#include "platform/ntf/FaultSchedule.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>

#include "common/AisNames.h"
#include "common/Environment.h"
#include "common/Escape.h"
#include "common/ReportOnce.h"
#include "platform/ntf/ServiceMutex.h"

namespace platform::ntf {

namespace {

constexpr char kVariable[] = "RUXA_NTF_FAULTS";
constexpr std::uint64_t kLargestNumber = 1'000'000'000;

/// Indexed by ServiceCall.
constexpr const char* kCallNames[kServiceCallCount] = {
    "initialize", "finalize", "allocate", "value", "send", "free", "search", "read"};

constexpr const char* kSettingNames[] = {"times", "after", "delay"};

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\n");
    const std::size_t last = text.find_last_not_of(" \t\n");
    return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
}

/// The parts between the separators, blanks around them removed.
std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        parts.push_back(trimmed(text.substr(begin, end - begin)));
        begin = end + 1;
    }
    return parts;
}

[[noreturn]] void refuse(const std::string& part, const std::string& whole,
                         const std::string& reason) {
    throw std::invalid_argument("'" + part + "' in '" + whole + "' " + reason);
}

template <typename Names> std::size_t indexOf(const std::string& name, const Names& names) {
    return static_cast<std::size_t>(std::find(std::begin(names), std::end(names), name) -
                                    std::begin(names));
}

/// The number that `text` is, or a number beyond the largest.
std::uint64_t numberIn(const std::string& text) {
    const bool isNumber = !text.empty() && text.size() < 11 &&
                          text.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? std::stoull(text) : kLargestNumber + 1;
}

} // namespace

FaultSchedule::FaultSchedule(const std::string& text) {
    for (const std::string& part : split(text, ';')) {
        if (!part.empty()) {
            m_faults.push_back(parseFault(part));
        }
    }
}

FaultSchedule::Fault FaultSchedule::parseFault(const std::string& text) {
    const std::vector<std::string> parts = split(text, ',');
    const std::vector<std::string> names = split(parts.front(), ':');
    if (names.size() != 2) {
        refuse(parts.front(), text, "is no CALL:RESULT");
    }
    const std::size_t call = indexOf(names[0], kCallNames);
    if (call == kServiceCallCount) {
        refuse(
            names[0], text,
            "is no call: choose initialize, finalize, allocate, value, send, free, search or read");
    }
    const std::optional<std::uint32_t> code = common::aisCode(names[1]);
    if (!code) {
        refuse(names[1], text, "is no result: OK, or an error's name, for instance TRY_AGAIN");
    }
    Fault fault;
    fault.call = static_cast<ServiceCall>(call);
    fault.result = static_cast<SaAisErrorT>(*code);
    for (auto part = parts.begin() + 1; part != parts.end(); ++part) {
        const std::vector<std::string> setting = split(*part, '=');
        const std::size_t index = setting.size() == 2 ? indexOf(setting[0], kSettingNames) : 0;
        if (setting.size() != 2 || index == std::size(kSettingNames)) {
            refuse(*part, text, "is none of times=N, after=N and delay=MILLISECONDS");
        }
        std::uint64_t Fault::*const settings[] = {&Fault::times, &Fault::after, &Fault::delay};
        fault.*settings[index] = numberIn(setting[1]);
        if (fault.*settings[index] > kLargestNumber) {
            refuse(setting[1], text, "is no number from 0 to 1000000000");
        }
    }
    return fault;
}

SaAisErrorT FaultSchedule::answerTo(ServiceCall call) {
    const std::uint64_t before = m_calls[static_cast<std::size_t>(call)]++;
    for (const Fault& fault : m_faults) {
        if (fault.call == call && before >= fault.after && before - fault.after < fault.times) {
            std::this_thread::sleep_for(std::chrono::milliseconds(fault.delay));
            if (fault.result != SA_AIS_OK) {
                common::reportOnce("ruxa-ntf: " + std::string(kVariable) + " refuses " +
                                   kCallNames[static_cast<std::size_t>(call)] + " with " +
                                   common::aisText(fault.result) + '\n');
            }
            return fault.result;
        }
    }
    return SA_AIS_OK;
}

FaultSchedule* scheduledFaults() {
    static bool isRead = false;
    static FaultSchedule* schedule = nullptr; // never deleted: clients may call at the very end
    std::unique_lock<std::mutex> lock(serviceMutex);
    if (isRead) {
        return schedule;
    }
    const char* const text = common::trustedEnvironment(kVariable);
    std::string mistake;
    try {
        schedule = *text == '\0' ? nullptr : new FaultSchedule(text);
    } catch (const std::invalid_argument& wrong) {
        mistake = std::string(kVariable) + ": " + common::escapedText(wrong.what()) +
                  "; no faults are made\n";
    }
    isRead = true;
    lock.unlock();
    if (!mistake.empty()) {
        common::reportOnce(mistake);
    }
    return schedule;
}

} // namespace platform::ntf
