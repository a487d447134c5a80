#include "SharedObject.h"

#include <csignal>
#include <iostream>

#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace dolqctl {

namespace {

/// As a program's own: all symbols are looked up at once.
void* load(const char* soname, int flags = 0) {
    // The dynamic linker looks in the folders of the object that calls it. dlopen would do, but a
    // sanitizer calls that in our place; base: where this program is itself.
    return dlmopen(LM_ID_BASE, soname, RTLD_NOW | flags);
}

/// A file that is cut off kills who loads it, so a child does first.
bool killsItsLoader(const char* soname) {
    std::cout.flush(); // or the child of a sanitizer's build prints it again
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGBUS, SIG_DFL); // which may be a sanitizer's
        const rlimit noCore{0, 0};
        ::setrlimit(RLIMIT_CORE, &noCore);
        load(soname);
        ::_exit(0);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFSIGNALED(status);
}

} // namespace

SharedObject::SharedObject(const char* soname)
    : m_object(static_cast<link_map*>(load(soname, RTLD_NOLOAD))) { // a handle is one of glibc's
    if (isLoaded()) {
        return;
    }
    if (killsItsLoader(soname)) {
        m_error = std::string(soname) +
                  ": it, or a library that it needs, kills who loads it, as a "
                  "file does that is cut off";
        return;
    }
    m_object = static_cast<link_map*>(load(soname));
    if (!isLoaded()) {
        m_error = dlerror();
    }
}

void* SharedObject::find(const char* symbol) {
    void* const found = isLoaded() ? dlsym(m_object, symbol) : nullptr;
    if (isLoaded() && found == nullptr) {
        m_error = file() + ": undefined symbol: " + symbol;
    }
    return found;
}

} // namespace dolqctl
