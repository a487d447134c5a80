// Shows that the direct client sends what the library sends: otherwise no ratio of the two says
// anything.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "Operations.h"
#include "platform/ntf/log/AlarmRecord.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"

namespace {

/// A line of the notification log without what no two notifications have in common; empty when it
/// is none.
std::string comparable(const std::string& line) {
    auto record = platform::ntf::parseLine(line);
    if (!record) {
        return "";
    }
    record->notificationId = 0;
    record->eventTimeNs = 0;
    return platform::ntf::toLine(*record);
}

} // namespace

int main() {
    std::string log = std::filesystem::temp_directory_path() / "dolq-bench-XXXXXX";
    if (mkstemp(log.data()) < 0) {
        std::perror(log.c_str());
        return 1;
    }
    setenv("RUXA_NTF_LOG", log.c_str(), 1);
    {
        const auto adapter = bench::makeAdapter();
        const bench::DirectSession session;
        for (const bench::Operation& operation : bench::operations()) {
            operation.call(*adapter);
            operation.sendDirectly(session.get());
        }
    }
    ruxa::fm::dolq::v1::freeFmiFactory();

    int different = 0;
    std::ifstream lines(log);
    for (const bench::Operation& operation : bench::operations()) {
        std::string library;
        std::string direct;
        std::getline(lines, library);
        std::getline(lines, direct);
        if (comparable(library).empty() || comparable(library) != comparable(direct)) {
            std::printf("%s\n  library: %s\n  direct:  %s\n", operation.name, library.c_str(),
                        direct.c_str());
            ++different;
        }
    }
    std::filesystem::remove(log);
    std::printf("%zu operations, %d sent differently\n", bench::operations().size(), different);
    return different == 0 ? 0 : 1;
}
