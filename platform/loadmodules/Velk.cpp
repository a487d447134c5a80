#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <Velk.h>

#include "common/Environment.h"
#include "common/Escape.h"
#include "common/LoadModuleNames.h"
#include "common/ReportOnce.h"
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

bool isCategory(std::string_view name) {
    return std::find(std::begin(common::kLoadModuleCategories),
                     std::end(common::kLoadModuleCategories),
                     name) != std::end(common::kLoadModuleCategories);
}

std::string manifestPath(const char* category) {
    const std::string directory = common::trustedEnvironment(kDirectoryVariable);
    return (directory.empty() ? common::kDefaultManifestDirectory : directory) + "/" + category +
           ".xml";
}

/// All that one query gives out.
struct Answer {
    std::vector<LoadModule> modules; // owns the texts
    std::vector<std::vector<Velk_lm_file>> files;
    std::vector<Velk_lm> records; // the list begins at the second; the first leads back here
};

int query(const char* category, Velk_lm_list& list) {
    if (!isCategory(category)) {
        return VELK_UNKNOWN_CATEGORY;
    }
    auto answer = std::make_unique<Answer>();
    const std::string path = manifestPath(category);
    std::string reason;
    const int result = readManifest(path, answer->modules, reason);
    if (!reason.empty()) {
        common::reportOnce("velk: the manifest '" + common::escapedText(path) +
                           "' is refused: " + common::escapedText(reason) + "\n");
    }
    if (result != VELK_OK || answer->modules.empty()) {
        return result;
    }
    answer->records.push_back({reinterpret_cast<const char*>(answer.get()), "", "", 0, nullptr});
    for (const LoadModule& module : answer->modules) {
        std::vector<Velk_lm_file>& files = answer->files.emplace_back();
        for (const TaggedFile& file : module.files) {
            files.push_back({file.tag.c_str(), file.path.c_str()});
        }
        answer->records.push_back({module.name.c_str(), module.productNumber.c_str(),
                                   module.revision.c_str(), files.size(), files.data()});
    }
    list = {answer->modules.size(), &answer->records[1]};
    static_cast<void>(answer.release()); // the list owns it from here
    return VELK_OK;
}

/// The answer that a list, which is not empty, is part of.
const Answer* answerOf(const Velk_lm_list& list) {
    return reinterpret_cast<const Answer*>(list.lms[-1].name);
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
    } catch (const std::bad_alloc&) {
        return VELK_NO_MEMORY; // nothing else is thrown on the way
    }
}

extern "C" [[gnu::visibility("default")]] void Velk_free_buffers(Velk_lm_list* list) {
    if (list != nullptr && list->lms != nullptr) {
        delete platform::loadmodules::answerOf(*list);
        *list = Velk_lm_list{0, nullptr};
    }
}
