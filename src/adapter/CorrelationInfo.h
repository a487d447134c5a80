#pragma once

#include <string>
#include <vector>

// The text that tells the receivers of an alarm which events it belongs to. It travels as the first
// entry of the notification's additional information, and receivers know it by its beginning,
// "CI=". It looks like JSON but is not escaped: receivers take the values as they come.

namespace dolq {

/// The correlation info of a primary alarm, which names the event that caused it:
/// CI={"C": [{"I": "<systemUUID>","n": "<computeName>"}],"P": "<correlationUUID>"}
/// Values are inserted as they are, without escaping.
std::string makePrimaryCorrelationInfo(const std::string& systemUUID,
                                       const std::string& computeName,
                                       const std::string& correlationUUID);

/// The correlation info of a secondary alarm, which names the events it is correlated with:
/// CI={"C": [{"I": "<systemUUID>","n": "<computeName>"}],"S": ["<UUID>","<UUID>"]}
/// Values are inserted as they are, without escaping. `correlationUUIDs` is not empty.
std::string makeSecondaryCorrelationInfo(const std::string& systemUUID,
                                         const std::string& computeName,
                                         const std::vector<std::string>& correlationUUIDs);

} // namespace dolq
