#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <saNtf.h>

#include "Ntf.h"

namespace dolqctl {

/// A value that a notification carries, with the number that the sender gave it.
struct Value {
    std::uint16_t id = 0;
    std::uint32_t type = SA_NTF_VALUE_STRING; ///< SaNtfValueTypeT
    std::optional<std::string> text;          ///< of the type string alone
};

/// An alarm notification as the service gives it. Texts are the sender's bytes, codes those of
/// saNtf.h.
struct Notification {
    SaNtfIdentifierT id = 0;
    std::int64_t eventTimeNs =
        0; ///< since 1970, UTC; garbage where neither sender nor service sets it
    std::uint32_t eventType = 0;
    std::string object;
    std::string notifyingObject;
    SaNtfClassIdT classId{};
    std::uint32_t severity = SA_NTF_SEVERITY_CLEARED;
    std::uint32_t cause = 0;
    std::uint32_t trend = 0;
    Value threshold;
    std::string text;
    std::vector<Value> info;
    std::vector<Value> repairActions;
    std::vector<Value> specificProblems;
    std::vector<Value> monitoredAttributes;
    std::vector<SaNtfIdentifierT> correlated;
};

/// As much of a distinguished name as a notification carries.
constexpr std::size_t kLongestObject = SA_MAX_NAME_LENGTH - 1;
/// That, of `object`, in quotes, and that it is cut.
std::string nameText(const std::string& object);

/// Reads the alarm notifications that the service has, in the order in which it received them.
class AlarmReader {
public:
    /// `object`: only those of this notification object and of those it contains; empty: all.
    AlarmReader(Waiting& waiting, std::string object)
        : m_waiting(waiting), m_object(std::move(object)) {}

    /// Gives each to `take`, but none that was given before, by this call or an earlier one. Where
    /// the service fails meanwhile, all begins anew in a new session: what was taken until `begin`
    /// is void. Throws CommandError when it keeps failing, and GivenUp.
    void read(const std::function<void()>& begin, const std::function<void(Notification&&)>& take);

private:
    void readOnce(const std::function<void(Notification&&)>& take);
    bool isMeant(const std::string& object) const;

    Waiting& m_waiting;
    const std::string m_object;
    /// By id and event time: a service that was restarted as a whole counts ids anew.
    std::set<std::pair<SaNtfIdentifierT, std::int64_t>> m_given;
};

} // namespace dolqctl
