#pragma once

#include <string>

#include "Diagnosis.h"
#include "Discovery.h"
#include "MappingFiles.h"

namespace dolqctl {

// What doctor and explain look at. In a diagnosis, what decides on more alarms comes later.

void checkSettings(Diagnosis& diagnosis);
void checkTraces(Diagnosis& diagnosis);
/// Those that say which load module and system a program belongs to.
void checkVariables(Diagnosis& diagnosis);
void checkCorrelationService(Diagnosis& diagnosis);
/// Whether the load module is there, and its mapping files are read.
void checkLoadModule(Diagnosis& diagnosis, const Discovery& discovery, const Inventory& inventory);
/// Whether a session opens and a notification can be had. False: the service did not answer.
bool checkNtfService(Diagnosis& diagnosis);
/// Whether the library and the parts of the platform can be loaded.
void checkParts(Diagnosis& diagnosis);
/// In what the running program `pid` sees something else than this process, which has its
/// variables and has loaded all parts. Nothing if `pid` is empty.
void checkProgram(Diagnosis& diagnosis, const std::string& pid, const Discovery& discovery);

} // namespace dolqctl
