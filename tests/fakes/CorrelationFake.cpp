#include <ruxa/zum2/v1/CorrelationApi.h>

#include "FakePlatform.h"

namespace ruxa::zum2::v1 {

namespace {

class Api final : public CorrelationApi {
public:
    bool getDerivedCorrelationUUID(std::uint32_t eventId, std::string& correlationUUID) override {
        platform().record("getDerivedCorrelationUUID " + std::to_string(eventId));
        if (platform().underivableEvents.count(eventId) != 0) {
            correlationUUID = platform().leftByFailedDerivation;
            return false;
        }
        if (platform().eventsWithEmptyUUID.count(eventId) == 0) { // it is the caller's
            correlationUUID = "uuid-" + std::to_string(eventId);
        }
        return true;
    }
};

} // namespace

CorrelationApi* getAPI() {
    static Api api;
    platform().record("getAPI");
    return platform().correlationService ? &api : nullptr;
}

} // namespace ruxa::zum2::v1
