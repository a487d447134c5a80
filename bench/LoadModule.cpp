#include "LoadModule.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace bench {

namespace {

constexpr char kManifest[] =
    R"(<loadModules><loadModule productNumber="CXC1" revision="R1A">)"
    R"(<file tag="alarm_mapping" path="mapping.xml"/></loadModule></loadModules>)";

std::filesystem::path makeDirectory() {
    std::string path = std::filesystem::temp_directory_path() / "dolq-bench-XXXXXX";
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder like " + path);
    }
    return path;
}

} // namespace

LoadModule::LoadModule(int entries) : m_directory(makeDirectory()) {
    std::ofstream(m_directory / "central.xml") << kManifest;
    std::ofstream mapping(mappingFile());
    mapping << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<mappings>\n";
    for (int faultId = 1; faultId <= entries; ++faultId) {
        mapping << "    <mapping faultid=\"" << faultId << "\" minor_type_id=\""
                << 0x8C0000 + faultId << "\" managed_object_class=\"board\"/>\n";
    }
    mapping << "</mappings>\n";
    setenv("VELK_MANIFEST_DIR", m_directory.c_str(), 1);
    setenv("ZBN_NO", "CXC1", 1);
    setenv("ZBN_REV", "R1A", 1);
}

LoadModule::~LoadModule() {
    std::error_code ignored;
    std::filesystem::remove_all(m_directory, ignored);
}

} // namespace bench
