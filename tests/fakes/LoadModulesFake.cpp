#include <map>
#include <vector>

#include <Velk.h>

#include "FakePlatform.h"

namespace {

/// What one list points to, until it is freed.
struct Answer {
    std::vector<FakePlatform::LoadModule> modules; // owns the texts
    std::vector<std::vector<Velk_lm_file>> files;
    std::vector<Velk_lm> records;
};

std::map<const Velk_lm*, Answer> g_answers;

} // namespace

extern "C" int Velk_get_lms(void* context, char* category, Velk_lm_list* list) {
    const PlatformCode here;
    platform().record(std::string("Velk_get_lms ") + (context == nullptr ? "" : "with a context ") +
                      category);
    const int error = platform().loadModuleErrors[category];
    if (error != 0) {
        return error;
    }
    Answer answer{platform().loadModules[category], {}, {}};
    answer.records.reserve(answer.modules.size() + 1); // one place, also for an empty list
    for (const auto& module : answer.modules) {
        auto& files = answer.files.emplace_back();
        for (const auto& [tag, path] : module.files) {
            files.push_back({tag.c_str(), path.c_str()});
        }
        const char* const number =
            platform().nullTextsInLoadModules ? nullptr : module.productNumber.c_str();
        answer.records.push_back(
            {nullptr, number, module.revision.c_str(), files.size(), files.data()});
    }
    const std::lock_guard<std::mutex> lock(platform().mutex);
    *list = {answer.records.size(), answer.records.data()};
    g_answers[list->lms] = std::move(answer);
    ++platform().openLoadModuleLists;
    return 0;
}

extern "C" void Velk_free_buffers(Velk_lm_list* list) {
    const PlatformCode here;
    platform().record("Velk_free_buffers");
    const std::lock_guard<std::mutex> lock(platform().mutex);
    platform().openLoadModuleLists -= static_cast<int>(g_answers.erase(list->lms));
    *list = {};
}
