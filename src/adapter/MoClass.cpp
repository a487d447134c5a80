// Objects are named by containment: each relative name stands for something inside the one before
// it, and the last one is the object's own. So its class is looked for from the end of the name.

#include "adapter/MoClass.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <utility>

namespace dolq {

MoClass parseMoClass(const std::string& notificationObject) {
    const std::size_t lastComma = notificationObject.rfind(',');
    const bool hasComma = lastComma != std::string::npos;
    const std::size_t begin = hasComma ? lastComma + 1 : 0; // of the last relative name
    const std::size_t equal = notificationObject.find('=', begin);
    if (equal == std::string::npos) {
        return {{}, hasComma, false};
    }
    std::string name(notificationObject, begin, equal - begin);
    name.erase(std::remove_if(name.begin(), name.end(),
                              [](unsigned char c) { return std::isspace(c) != 0; }),
               name.end());
    return {std::move(name), hasComma, true};
}

} // namespace dolq
