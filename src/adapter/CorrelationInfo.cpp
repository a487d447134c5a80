#include "adapter/CorrelationInfo.h"

#include <string_view>

namespace dolq {

namespace {

// What stands around the values. The blanks are part of the format: one after each colon, none
// after a comma.
constexpr std::string_view kBeforeSystemUUID = R"(CI={"C": [{"I": ")";
constexpr std::string_view kBeforeComputeName = R"(","n": ")";
constexpr std::string_view kBeforePrimary = R"("}],"P": ")";
constexpr std::string_view kAfterPrimary = R"("})";
constexpr std::string_view kBeforeSecondary = R"("}],"S": [)";
constexpr std::string_view kAfterSecondary = R"(]})";

/// The pieces that both forms begin with, in a string with room for `rest` more characters.
std::string beginWithIdentity(const std::string& systemUUID, const std::string& computeName,
                              std::size_t rest) {
    std::string info;
    info.reserve(kBeforeSystemUUID.size() + systemUUID.size() + kBeforeComputeName.size() +
                 computeName.size() + rest);
    info.append(kBeforeSystemUUID).append(systemUUID);
    info.append(kBeforeComputeName).append(computeName);
    return info;
}

} // namespace

std::string makePrimaryCorrelationInfo(const std::string& systemUUID,
                                       const std::string& computeName,
                                       const std::string& correlationUUID) {
    std::string info =
        beginWithIdentity(systemUUID, computeName,
                          kBeforePrimary.size() + correlationUUID.size() + kAfterPrimary.size());
    info.append(kBeforePrimary).append(correlationUUID).append(kAfterPrimary);
    return info;
}

std::string makeSecondaryCorrelationInfo(const std::string& systemUUID,
                                         const std::string& computeName,
                                         const std::vector<std::string>& correlationUUIDs) {
    std::size_t rest = kBeforeSecondary.size() + kAfterSecondary.size();
    for (const std::string& uuid : correlationUUIDs) {
        rest += uuid.size() + 3; // two quotes and a comma
    }
    std::string info = beginWithIdentity(systemUUID, computeName, rest);
    info.append(kBeforeSecondary);
    const char* separator = "";
    for (const std::string& uuid : correlationUUIDs) {
        info.append(separator).append(1, '"').append(uuid).append(1, '"');
        separator = ",";
    }
    info.append(kAfterSecondary);
    return info;
}

} // namespace dolq
