#include <ruxa/zum2/v1/CorrelationApi.h>

#include "FakePlatform.h"

namespace ruxa::zum2::v1 {

namespace {

class Api final : public CorrelationApi {
public:
    bool getDerivedCorrelationUUID(std::uint32_t eventId, std::string& correlationUUID) override {
        platform().record("getDerivedCorrelationUUID " + std::to_string(eventId) +
                          (correlationUUID.empty() ? "" : " into a used string"));
        if (platform().underivableEvents.count(eventId) != 0) {
            correlationUUID = platform().leftByFailedDerivation;
            return false;
        }
        const bool empty = platform().eventsWithEmptyUUID.count(eventId) != 0;
        correlationUUID = empty ? "" : "uuid-" + std::to_string(eventId);
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
