#pragma once

/// The names under which load modules and their alarm mapping files are found.
namespace common {

/// The environment variables that say which load module a program belongs to.
constexpr char kProductNumberVariable[] = "ZBN_NO";
constexpr char kRevisionVariable[] = "ZBN_REV";

/// The load-module handler's categories, in the order in which the library asks for them.
constexpr const char* kLoadModuleCategories[] = {"central", "local", "dynamic"};

/// The tag of a load module's alarm mapping files.
constexpr char kMappingFileTag[] = "alarm_mapping";

/// The folder from which the embedded handler reads its manifests if the environment names none.
constexpr char kDefaultManifestDirectory[] = "/etc/ruxa/loadmodules";

} // namespace common
