#include "adapter/CorrelationInfo.h"

#include <cstddef>
#include <initializer_list>
#include <string_view>

#include "common/Joined.h"

namespace dolq {

namespace {

/// In one block of memory: every alarm that is raised has such a text.
std::string concatenated(std::initializer_list<std::string_view> pieces) {
    std::size_t length = 0;
    for (const std::string_view piece : pieces) {
        length += piece.size();
    }
    std::string text;
    text.reserve(length);
    for (const std::string_view piece : pieces) {
        text += piece;
    }
    return text;
}

} // namespace

// Both texts begin alike, yet each stands here whole, as receivers see it. The blanks are part of
// the format: one after each colon, none after a comma.

std::string makePrimaryCorrelationInfo(const std::string& systemUUID,
                                       const std::string& computeName,
                                       const std::string& correlationUUID) {
    return concatenated({R"(CI={"C": [{"I": ")", systemUUID, R"(","n": ")", computeName,
                         R"("}],"P": ")", correlationUUID, R"("})"});
}

std::string makeSecondaryCorrelationInfo(const std::string& systemUUID,
                                         const std::string& computeName,
                                         const std::vector<std::string>& correlationUUIDs) {
    const std::string list = common::joined(correlationUUIDs, R"(",")");
    return concatenated({R"(CI={"C": [{"I": ")", systemUUID, R"(","n": ")", computeName,
                         R"("}],"S": [")", list, R"("]})"});
}

} // namespace dolq
