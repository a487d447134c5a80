#include "SharedObject.h"

#include <csignal>
#include <cstring>

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

/// A file that is cut off kills who loads it, so a child does first. Returns what killed it, or 0.
int signalOfLoading(const char* soname) {
    const pid_t child = ::fork();
    if (child == 0) {
        for (const int deadly : {SIGBUS, SIGSEGV, SIGILL, SIGFPE, SIGABRT}) {
            std::signal(deadly, SIG_DFL);
        }
        const rlimit noCore{0, 0};
        ::setrlimit(RLIMIT_CORE, &noCore);
        ::_exit(load(soname) != nullptr ? 0 : 1);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFSIGNALED(status)
               ? WTERMSIG(status)
               : 0;
}

} // namespace

SharedObject::SharedObject(const char* soname)
    : m_object(static_cast<link_map*>(load(soname, RTLD_NOLOAD))) { // a handle is one of glibc's
    if (isLoaded()) {
        return;
    }
    if (const int signal = signalOfLoading(soname); signal != 0) {
        m_error =
            std::string(soname) + ": loading it, or a library that it needs, ends in signal " +
            std::to_string(signal) + " (" + strsignal(signal) + "), as with a file that is cut off";
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
