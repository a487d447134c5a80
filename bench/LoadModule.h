#pragma once

#include <filesystem>
#include <string>

namespace bench {

/// A load module with one mapping file, each entry of a fault of its own and the class "board". It
/// is this program's load module until the end of the scope.
class LoadModule {
public:
    explicit LoadModule(int entries);
    ~LoadModule();
    LoadModule(const LoadModule&) = delete;
    LoadModule& operator=(const LoadModule&) = delete;

    std::string mappingFile() const { return m_directory / "mapping.xml"; }

private:
    std::filesystem::path m_directory;
};

} // namespace bench
