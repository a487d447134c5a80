#include "Library.h"

#include <csignal>
#include <cstring>
#include <filesystem>
#include <optional>

#include <dlfcn.h>
#include <elf.h>
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

/// A file that is cut off kills who loads it, so a child does first. Returns what killed it.
std::optional<int> signalOfLoading(const char* soname) {
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
               ? std::optional(WTERMSIG(status))
               : std::nullopt;
}

/// The build id among the notes that lie from `begin` to `end`.
std::string buildIdAmong(const char* begin, const char* end) {
    constexpr std::size_t kAlignment = 4;
    const auto padded = [](std::size_t size) {
        return (size + kAlignment - 1) / kAlignment * kAlignment;
    };
    std::string text;
    while (text.empty() && end - begin > static_cast<std::ptrdiff_t>(sizeof(ElfW(Nhdr)))) {
        ElfW(Nhdr) note{};
        std::memcpy(&note, begin, sizeof note);
        const char* const name = begin + sizeof note;
        const char* const id = name + padded(note.n_namesz);
        if (note.n_type == NT_GNU_BUILD_ID &&
            std::string_view(name, note.n_namesz) == std::string_view("GNU", sizeof "GNU")) {
            for (std::size_t i = 0; i < note.n_descsz; ++i) {
                constexpr char kDigits[] = "0123456789abcdef";
                const auto byte = static_cast<unsigned char>(id[i]);
                text += {kDigits[byte >> 4], kDigits[byte & 0xf]};
            }
        }
        begin = id + padded(note.n_descsz);
    }
    return text;
}

} // namespace

Library::Library(const char* soname)
    : m_object(static_cast<link_map*>(load(soname, RTLD_NOLOAD))) { // a handle is one of glibc's
    if (isLoaded()) {
        return;
    }
    if (const auto signal = signalOfLoading(soname)) {
        m_error = std::string(soname) +
                  ": loading it, or a library that it needs, ends in signal " +
                  std::to_string(*signal) + " (" + strsignal(*signal) +
                  "), as with a file that is cut off";
        return;
    }
    dlerror();
    m_object = static_cast<link_map*>(load(soname));
    if (!isLoaded()) {
        m_error = dlerror();
    }
}

std::string Library::buildId() const {
    struct Search {
        const link_map* object;
        std::string found;
    } search = {m_object, {}};
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* data) {
            auto& wanted = *static_cast<Search*>(data);
            if (info->dlpi_addr != wanted.object->l_addr) {
                return 0;
            }
            for (int i = 0; i < info->dlpi_phnum && wanted.found.empty(); ++i) {
                if (const ElfW(Phdr)& segment = info->dlpi_phdr[i]; segment.p_type == PT_NOTE) {
                    // NOLINTNEXTLINE(performance-no-int-to-ptr): the linker tells addresses so.
                    const auto* const notes =
                        reinterpret_cast<const char*>(info->dlpi_addr + segment.p_vaddr);
                    wanted.found = buildIdAmong(notes, notes + segment.p_memsz);
                }
            }
            return 1;
        },
        &search);
    return search.found;
}

void* Library::find(const char* symbol) {
    dlerror();
    void* const found = dlsym(m_object, symbol);
    if (found == nullptr) {
        const char* const reason = dlerror(); // none for a symbol that is nowhere
        m_error = reason != nullptr ? reason : file() + ": " + symbol + " has no address";
    }
    return found;
}

std::string versionText() {
    std::string text = "dolqctl " DOLQCTL_VERSION;
    const auto add = [&](const char* name, const char* soname) {
        const Library library(soname);
        text += std::string("\n") + name + ": ";
        if (!library.isLoaded()) {
            text += library.error();
            return;
        }
        std::error_code error;
        const auto file = std::filesystem::canonical(library.file(), error);
        const std::string id = library.buildId();
        text += (error ? library.file() : file.string()) +
                (id.empty() ? ", without a build id" : ", build id " + id);
    };
    add("library", kDolqLibrary);
    add("trace backend", kTraceLibrary);
    add("correlation service", kCorrelationLibrary);
    add("load-module handler", kLoadModuleLibrary);
    add("NTF library", kNtfLibrary);
    return text;
}

} // namespace dolqctl
