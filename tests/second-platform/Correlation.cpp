#include "Record.h"
#include "ruxa/zum2/v1/CorrelationApi.h"

namespace {

class Correlation final : public ruxa::zum2::v1::CorrelationApi {
    bool getDerivedCorrelationUUID(std::uint32_t eventId, std::string& correlationUUID) override {
        correlationUUID = "second-" + std::to_string(eventId);
        record("correlation " + correlationUUID);
        return true;
    }
};

} // namespace

ruxa::zum2::v1::CorrelationApi* ruxa::zum2::v1::getAPI() {
    static Correlation correlation;
    return &correlation;
}
