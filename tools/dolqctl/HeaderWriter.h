#pragma once

#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Inventory.h"

namespace dolqctl {

/// One constant of the header. Refers to the inventory it was made from.
struct Constant {
    std::string name;
    const Mapping* mapping;
};

/// The text names both mappings with their places.
class NameCollision : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One constant for each effective mapping, in their order: "kPort_4102". What a C++ name cannot
/// hold becomes "_". Throws NameCollision when two get the same one.
std::vector<Constant> namedConstants(const Inventory& inventory);

/// Whether `name` can be a namespace: identifiers joined by "::", none of them reserved.
bool isNamespace(const std::string& name);

/// A C++17 header that needs nothing but the standard library. The same input gives the same bytes,
/// wherever the files lie.
void writeHeader(const std::vector<Constant>& constants, const std::string& nameSpace,
                 std::ostream& out);

} // namespace dolqctl
