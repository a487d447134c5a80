#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>
#include <saNtf.h>

namespace dolqctl {

/// An alarm notification as the service gives it. Texts are the sender's bytes.
// NOLINTNEXTLINE(bugprone-exception-escape): without memory a document ends the process
struct Notification {
    SaNtfIdentifierT id = 0;
    std::int64_t eventTimeNs = 0; ///< since 1970, UTC; garbage where nobody sets it
    std::string object;
    SaNtfClassIdT classId{};
    std::uint32_t severity = SA_NTF_SEVERITY_CLEARED;
    nlohmann::ordered_json content; ///< all other fields, under the names that users see
};

/// As much of a distinguished name as a notification carries.
constexpr std::size_t kLongestObject = SA_MAX_NAME_LENGTH - 1;
/// That, of `object`, in quotes, and that it is cut.
std::string nameText(const std::string& object);
/// "2/17", "18568:3/1" of another vendor than the library's.
std::string classText(const SaNtfClassIdT& id);

/// Reads the alarm notifications that the service has, in the order in which it received them.
/// Inside `await`.
class AlarmReader {
public:
    /// `object`: only those of this notification object and of those it contains; empty: all.
    explicit AlarmReader(std::string object) : m_object(std::move(object)) {}

    /// Gives each to `take`, but none that was given before, by this call or an earlier one. Where
    /// the service fails meanwhile, all begins anew in a new session: what was taken until `begin`
    /// is void. Throws CommandError when it keeps failing.
    void read(const std::function<void()>& begin, const std::function<void(Notification&&)>& take);

private:
    void readOnce(const std::function<void(Notification&&)>& take);
    bool isMeant(const std::string& object) const;

    const std::string m_object;
    /// By id and event time: a service that was restarted as a whole counts ids anew.
    std::set<std::pair<SaNtfIdentifierT, std::int64_t>> m_given;
};

} // namespace dolqctl
