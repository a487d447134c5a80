#include "Unreadable.h"

#include <cerrno>
#include <cstring>

#include <tinyxml.h>

#include "common/RegularFile.h"
#include "common/XmlGuard.h"

namespace dolqctl {

namespace {

std::string unsafeReason() {
    return "not given to the parser: more than " + std::to_string(common::kMaxElementDepth) +
           " levels of elements, more than " + std::to_string(common::kMaxAttributes) +
           " attributes in one, or text broken off in the middle of a character or declaration";
}

std::string withoutFullStop(std::string text) {
    if (!text.empty() && text.back() == '.') {
        text.pop_back();
    }
    return text;
}

} // namespace

Unreadable whyNotLoaded(const std::string& path, const TiXmlDocument& document) {
    if (document.Error()) {
        return {{path, document.ErrorRow(), document.ErrorCol()},
                withoutFullStop(document.ErrorDesc())};
    }
    const common::File file = common::openRegularFile(path);
    switch (const int error = file != nullptr ? 0 : errno) {
    case 0:
        return {{path}, unsafeReason()};
    case EISDIR:
    case EINVAL:
        return {{path}, "not a regular file"};
    default:
        return {{path}, std::strerror(error)};
    }
}

Unreadable whyNoRoot(const std::string& path) { return {{path}, "no root element"}; }

} // namespace dolqctl
