#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <Velk.h>

#include "common/Environment.h"
#include "platform/loadmodules/Manifest.h"

// Clients read these records by offset.
static_assert(sizeof(Velk_lm_list) == 16 && offsetof(Velk_lm_list, count) == 0 &&
              offsetof(Velk_lm_list, lms) == 8);
static_assert(sizeof(Velk_lm) == 40 && offsetof(Velk_lm, name) == 0 &&
              offsetof(Velk_lm, productNumber) == 8 && offsetof(Velk_lm, revision) == 16 &&
              offsetof(Velk_lm, fileCount) == 24 && offsetof(Velk_lm, files) == 32);
static_assert(sizeof(Velk_lm_file) == 16 && offsetof(Velk_lm_file, tag) == 0 &&
              offsetof(Velk_lm_file, path) == 8);
static_assert(sizeof(Velk_lm::fileCount) == 8 && sizeof(Velk_lm_list::count) == 8);

namespace platform::loadmodules {

namespace {

constexpr char kDirectoryVariable[] = "VELK_MANIFEST_DIR";
constexpr char kDefaultDirectory[] = "/etc/ruxa/loadmodules";

bool isCategory(std::string_view name) {
    return name == "central" || name == "local" || name == "dynamic";
}

std::string manifestPath(const char* category) {
    const std::string directory = common::trustedEnvironment(kDirectoryVariable);
    return (directory.empty() ? kDefaultDirectory : directory) + "/" + category + ".xml";
}

std::size_t textSize(const std::vector<LoadModule>& modules) {
    std::size_t size = 0;
    for (const LoadModule& module : modules) {
        size += module.name.size() + module.productNumber.size() + module.revision.size() + 3;
        for (const TaggedFile& file : module.files) {
            size += file.tag.size() + file.path.size() + 2;
        }
    }
    return size;
}

std::size_t fileCount(const std::vector<LoadModule>& modules) {
    std::size_t count = 0;
    for (const LoadModule& module : modules) {
        count += module.files.size();
    }
    return count;
}

const char* place(const std::string& text, char*& at) {
    const char* start = at;
    std::memcpy(at, text.c_str(), text.size() + 1);
    at += text.size() + 1;
    return start;
}

/// Lays everything out in one block that begins with the records, so that the list's pointer is
/// all that is needed to release it: records, then file entries, then texts.
int fill(const std::vector<LoadModule>& modules, Velk_lm_list& list) {
    if (modules.empty()) {
        return VELK_OK;
    }
    const std::size_t recordSize = modules.size() * sizeof(Velk_lm);
    const std::size_t fileSize = fileCount(modules) * sizeof(Velk_lm_file);
    auto* block = static_cast<char*>(std::malloc(recordSize + fileSize + textSize(modules)));
    if (block == nullptr) {
        return VELK_NO_MEMORY;
    }
    char* record = block;
    char* entry = block + recordSize;
    char* text = entry + fileSize;
    for (const LoadModule& module : modules) {
        const std::size_t count = module.files.size();
        const char* name = place(module.name, text);
        const char* productNumber = place(module.productNumber, text);
        const char* revision = place(module.revision, text);
        auto* files = count == 0 ? nullptr : reinterpret_cast<Velk_lm_file*>(entry);
        for (const TaggedFile& file : module.files) {
            const char* tag = place(file.tag, text);
            new (entry) Velk_lm_file{tag, place(file.path, text)};
            entry += sizeof(Velk_lm_file);
        }
        new (record) Velk_lm{name, productNumber, revision, count, files};
        record += sizeof(Velk_lm);
    }
    list.count = modules.size();
    list.lms = reinterpret_cast<Velk_lm*>(block);
    return VELK_OK;
}

int query(const char* category, Velk_lm_list& list) {
    if (!isCategory(category)) {
        return VELK_UNKNOWN_CATEGORY;
    }
    std::vector<LoadModule> modules;
    const int result = readManifest(manifestPath(category), modules);
    return result == VELK_OK ? fill(modules, list) : result;
}

} // namespace

} // namespace platform::loadmodules

extern "C" [[gnu::visibility("default")]] int Velk_get_lms(void* /*context*/, char* category,
                                                           Velk_lm_list* list) {
    if (list != nullptr) {
        *list = Velk_lm_list{0, nullptr};
    }
    if (list == nullptr || category == nullptr) {
        return VELK_BAD_ARGUMENT;
    }
    try {
        return platform::loadmodules::query(category, *list);
    } catch (...) {
        return VELK_NO_MEMORY; // nothing else is thrown on the way
    }
}

extern "C" [[gnu::visibility("default")]] void Velk_free_buffers(Velk_lm_list* list) {
    if (list != nullptr) {
        std::free(const_cast<Velk_lm*>(list->lms));
        *list = Velk_lm_list{0, nullptr};
    }
}
