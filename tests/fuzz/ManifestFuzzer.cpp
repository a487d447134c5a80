// A load-module manifest of any content.

#include "Fuzzing.h"
#include "Velk.h"
#include "platform/loadmodules/Manifest.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const InputFile file(data, size);
    std::vector<platform::loadmodules::LoadModule> modules;
    std::string reason;
    const int result = platform::loadmodules::readManifest(file.path(), modules, reason);
    require(result == VELK_OK || result == VELK_MALFORMED_MANIFEST, "the result of a whole file");
    require(reason.empty() == (result == VELK_OK), "a reason for each refusal");
    for (const auto& module : modules) {
        for (const auto& tagged : module.files) {
            require(result != VELK_OK || tagged.path.front() == '/', "paths are absolute");
        }
    }
    return 0;
}
