#pragma once

#include <string>

#include "xmlconf/MappingFileObserverI.h"

namespace dolq::xmlconf {

/// Reads the alarm mapping file `fileName` and tells `observer` what it holds. Traces nothing and
/// needs nothing of the platform. False when the file does not load or has no root element; a
/// mapping element without both ids is skipped alone.
bool readMappingFile(const std::string& fileName, MappingFileObserverI& observer);

} // namespace dolq::xmlconf
