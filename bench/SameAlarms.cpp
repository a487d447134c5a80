// Sends each operation's notification through the library and then through the direct client, for
// check-same-alarms to compare them.

#include "Operations.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"

int main() {
    {
        const auto adapter = bench::makeAdapter();
        const SaNtfHandleT session = bench::openSession();
        for (const bench::Operation& operation : bench::operations()) {
            operation.call(*adapter);
            operation.sendDirectly(session);
        }
    }
    ruxa::fm::dolq::v1::freeFmiFactory();
    return 0;
}
