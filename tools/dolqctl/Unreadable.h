#pragma once

#include <string>

#include "Place.h"

class TiXmlDocument;

namespace dolqctl {

/// Why the reader takes nothing from a file, and where in it.
struct Unreadable {
    Place place;
    std::string reason;
};

/// For a file of which the reader said that `document` was not loaded.
Unreadable whyNotLoaded(const std::string& path, const TiXmlDocument& document);

Unreadable whyNoRoot(const std::string& path);

} // namespace dolqctl
