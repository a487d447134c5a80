#include <algorithm>
#include <cctype>
#include <string>

#include "common/Environment.h"
#include "doctor/Diagnosis.h"

namespace dolqctl {

namespace {

/// The value of a variable that the library needs; empty when there is nothing to look at further.
std::string needed(Diagnosis& diagnosis, const char* name, const char* without) {
    const char* const value = common::environment(name, nullptr);
    if (value == nullptr || *value == '\0') {
        diagnosis.fail(name, value != nullptr ? "is set to nothing" : "is not set",
                       std::string(without) + ": set " + name);
    }
    return value != nullptr ? value : "";
}

bool hasWhiteSpace(const std::string& value) {
    return std::any_of(value.begin(), value.end(),
                       [](unsigned char c) { return std::isspace(c) != 0; });
}

/// "0f4c2a1e-9b7d-4c3a-8e21-5d6f7a8b9c0d"
bool isUuid(const std::string& value) {
    std::string shape;
    for (const char c : value) {
        shape += std::isxdigit(static_cast<unsigned char>(c)) != 0 ? 'x' : c;
    }
    return shape == "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
}

/// They are compared letter for letter with those of the load modules.
void checkIdentity(Diagnosis& diagnosis, const char* name) {
    const std::string value =
        needed(diagnosis, name, "no load module is found without it, and so no mapping");
    if (value.empty()) {
        return;
    }
    if (hasWhiteSpace(value)) {
        diagnosis.warn(name, "is '" + value + "', with white space in it",
                       "compare it with the load modules': white space counts");
    } else {
        diagnosis.ok(name, "is " + value);
    }
}

void checkNum(Diagnosis& diagnosis) {
    constexpr char kCheck[] = "ZBN_NUM";
    const std::string number = common::environment("ZBN_NO");
    const char* const shown = common::environment(kCheck, nullptr);
    if (shown == nullptr || *shown == '\0') {
        diagnosis.warn(kCheck, shown != nullptr ? "is set to nothing" : "is not set",
                       "set it as ZBN_NO: only a trace shows it, that of a failed lookup");
    } else if (!number.empty() && shown != number) {
        diagnosis.warn(kCheck, std::string("is ") + shown + ", but ZBN_NO is " + number,
                       "set both alike: load modules are found by ZBN_NO, but the trace of a "
                       "failed lookup shows ZBN_NUM");
    } else {
        diagnosis.ok(kCheck, std::string("is ") + shown);
    }
}

void checkReporter(Diagnosis& diagnosis, const char* name) {
    const std::string value = needed(
        diagnosis, name, "raises that do not name the reporting system themselves are refused");
    if (value.empty()) {
        return;
    }
    if (value.find_first_of("\"\\") != std::string::npos) {
        diagnosis.warn(name, "is '" + value + "'",
                       "take the quotes and backslashes out: no receiver can decode the "
                       "correlation with them");
    } else if (std::string(name) == "SYSTEM_UUID" && !isUuid(value)) {
        diagnosis.warn(name, "is '" + value + "', which is no UUID",
                       "set the system's UUID: systems without one share their correlation UUIDs");
    } else {
        diagnosis.ok(name, "is " + value);
    }
}

} // namespace

void checkEnvironment(Diagnosis& diagnosis) {
    checkIdentity(diagnosis, "ZBN_NO");
    checkIdentity(diagnosis, "ZBN_REV");
    checkNum(diagnosis);
    checkReporter(diagnosis, "SYSTEM_UUID");
    checkReporter(diagnosis, "COMPUTE_NAME");
}

} // namespace dolqctl
