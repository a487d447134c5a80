#pragma once

#include <string>

#include "xmlconf/MappingFileObserverI.h"

namespace dolq::xmlconf {

/// Reads the alarm mapping file `fileName` and tells `observer` what it holds. Neither traces nor
/// stores anything, and needs no part of the platform: the library and its tool read with it. False
/// when the file does not load or has no root element; of mapping elements, one without both ids is
/// skipped alone. The ids are read as signed 32-bit numbers and taken as unsigned: "-1" is
/// 4294967295.
bool readMappingFile(const std::string& fileName, MappingFileObserverI& observer);

} // namespace dolq::xmlconf
