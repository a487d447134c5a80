#pragma once

#include <string>
#include <vector>

namespace platform::loadmodules {

struct TaggedFile {
    std::string tag;
    std::string path;
};

struct LoadModule {
    std::string name;
    std::string productNumber;
    std::string revision;
    std::vector<TaggedFile> files;
};

/// Reads the manifest `path` into `modules`. A file that does not exist is an empty category.
/// Relative paths become relative to the manifest's directory. Returns a `Velk_result`; `modules`
/// is complete when that is `VELK_OK` and to be thrown away otherwise. `reason` then says what is
/// wrong with the file, in which line if it is known, and stays empty when memory ran out.
int readManifest(const std::string& path, std::vector<LoadModule>& modules, std::string& reason);

} // namespace platform::loadmodules
