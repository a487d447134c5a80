#pragma once

#include <string>

namespace dolq {

/// The managed object class in a notification object. That is a distinguished name, relative names
/// of the form attribute=value joined by commas, and the class is the attribute of the last one,
/// without its white space: "Board" in "managedElement=1, Board=3". Nothing can be escaped.
struct MoClass {
    std::string name; ///< empty when there is no "="
    bool hasComma;    ///< without one, the whole text is the relative name
    bool hasEqual;
};

MoClass parseMoClass(const std::string& notificationObject);

} // namespace dolq
