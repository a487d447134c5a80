#include <algorithm>
#include <cstring>

#include <Velk.h>

#include "FakePlatform.h"

namespace {

const char* copied(const std::string& text) { return strdup(text.c_str()); }

} // namespace

extern "C" int Velk_get_lms(void* context, char* category, Velk_lm_list* list) {
    const PlatformCode here;
    platform().record(std::string("Velk_get_lms ") + (context == nullptr ? "" : "with a context ") +
                      category);
    const int error = platform().loadModuleErrors[category];
    if (error != 0) {
        return error;
    }
    const auto& modules = platform().loadModules[category];
    auto* const records = new Velk_lm[modules.size()];
    for (std::size_t i = 0; i < modules.size(); ++i) {
        const auto& files = modules[i].files;
        auto* const entries = new Velk_lm_file[files.size()];
        std::transform(files.begin(), files.end(), entries, [](const auto& file) {
            return Velk_lm_file{copied(file.first), copied(file.second)};
        });
        records[i] = {nullptr, copied(modules[i].productNumber), copied(modules[i].revision),
                      files.size(), entries};
        if (platform().nullTextsInLoadModules) {
            std::free(const_cast<char*>(records[i].productNumber));
            records[i].productNumber = nullptr;
        }
    }
    *list = {modules.size(), records};
    ++platform().openLoadModuleLists;
    return 0;
}

extern "C" void Velk_free_buffers(Velk_lm_list* list) {
    const PlatformCode here;
    platform().record("Velk_free_buffers");
    --platform().openLoadModuleLists;
    for (std::size_t i = 0; i < list->count; ++i) {
        const Velk_lm& record = list->lms[i];
        for (std::size_t k = 0; k < record.fileCount; ++k) {
            std::free(const_cast<char*>(record.files[k].tag));
            std::free(const_cast<char*>(record.files[k].path));
        }
        delete[] record.files;
        std::free(const_cast<char*>(record.productNumber));
        std::free(const_cast<char*>(record.revision));
    }
    delete[] list->lms;
    *list = {};
}
