#pragma once

#include <cstdlib>
#include <fstream>
#include <string>

namespace bench {

/// Makes this program a load module with one mapping file, which it returns: `entries` mappings of
/// the class "board", each of a fault of its own. Both files lie in VELK_MANIFEST_DIR.
inline std::string makeLoadModule(int entries) {
    const std::string folder = std::getenv("VELK_MANIFEST_DIR");
    std::ofstream(folder + "/central.xml")
        << R"(<loadModules><loadModule productNumber="CXC1" revision="R1A">)"
        << R"(<file tag="alarm_mapping" path="mapping.xml"/></loadModule></loadModules>)";
    std::ofstream mappings(folder + "/mapping.xml");
    mappings << "<mappings>\n";
    for (int faultId = 1; faultId <= entries; ++faultId) {
        mappings << "    <mapping faultid=\"" << faultId << "\" minor_type_id=\""
                 << 0x8C0000 + faultId << "\" managed_object_class=\"board\"/>\n";
    }
    mappings << "</mappings>\n";
    setenv("ZBN_NO", "CXC1", 1);
    setenv("ZBN_REV", "R1A", 1);
    return folder + "/mapping.xml";
}

} // namespace bench
