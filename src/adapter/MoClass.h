#pragma once

#include <string>

namespace dolq {

/// The managed object class in a notification object: the attribute of the last relative name,
/// white space removed.
struct MoClass {
    std::string name; ///< empty when there is no "="
    bool hasComma;    ///< without one, the whole text is the relative name
    bool hasEqual;
};

MoClass parseMoClass(const std::string& notificationObject);

} // namespace dolq
