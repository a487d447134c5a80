// Loads the library, raises an alarm through it, unloads it, and does so again.
// Usage: dlopen-client LIBRARY

#include <cstdio>

#include <dlfcn.h>

#include "ruxa/fm/dolq/v1/FmiFactory.h"

namespace {

template <typename Function> Function* symbol(void* library, const char* name) {
    return reinterpret_cast<Function*>(dlsym(library, name));
}

bool useOnce(const char* path) {
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return false;
    }
    auto* const get =
        symbol<ruxa::fm::dolq::v1::FmiFactory*()>(library, "_ZN4ruxa2fm4dolq2v113getFmiFactoryEv");
    auto* const free = symbol<void()>(library, "_ZN4ruxa2fm4dolq2v114freeFmiFactoryEv");
    if (get == nullptr || free == nullptr) {
        std::fputs("an entry point is missing\n", stderr);
        return false;
    }
    get()->getConfiguration()->setMapping(7, 65538, "Unit");
    auto* const client = get()->createFaultManagement();
    client->ceaseAlarm("Top=1,Unit=7", 7, "");
    delete client;
    free();
    dlclose(library);
    if (dlopen(path, RTLD_NOW | RTLD_NOLOAD) != nullptr) {
        std::fputs("still loaded after dlclose\n", stderr);
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    return argc == 2 && useOnce(argv[1]) && useOnce(argv[1]) ? 0 : 1;
}
