#include "adapter/CorrelationInfo.h"

#include <cstddef>

#include "common/Joined.h"

namespace dolq {

// The blanks are part of the format: one after each colon, none after a comma. Each alarm that is
// raised has such a text, so it is made in one block of memory.

namespace {

/// What both texts begin with, with room for `more` characters of values behind it.
std::string beginWithIdentity(const std::string& systemUUID, const std::string& computeName,
                              std::size_t more) {
    constexpr std::size_t kAroundValues = 50; // is enough
    std::string info;
    info.reserve(kAroundValues + systemUUID.size() + computeName.size() + more);
    info.append(R"(CI={"C": [{"I": ")").append(systemUUID);
    info.append(R"(","n": ")").append(computeName);
    return info;
}

} // namespace

std::string makePrimaryCorrelationInfo(const std::string& systemUUID,
                                       const std::string& computeName,
                                       const std::string& correlationUUID) {
    std::string info = beginWithIdentity(systemUUID, computeName, correlationUUID.size());
    info.append(R"("}],"P": ")").append(correlationUUID).append(R"("})");
    return info;
}

std::string makeSecondaryCorrelationInfo(const std::string& systemUUID,
                                         const std::string& computeName,
                                         const std::vector<std::string>& correlationUUIDs) {
    const std::string list = common::joined(correlationUUIDs, R"(",")");
    std::string info = beginWithIdentity(systemUUID, computeName, list.size());
    info.append(R"("}],"S": [")").append(list).append(R"("]})");
    return info;
}

} // namespace dolq
