#pragma once

#include <string>
#include <vector>

class TiXmlDocument;
class TiXmlElement;

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

/// Hears what the reader makes of a manifest, in document order: all that it is refused for, too.
class ManifestObserverI {
public:
    virtual ~ManifestObserverI() = default;

    /// Whether elements and errors get a row and a column.
    virtual bool wantsPlaces() const { return false; }

    /// It is refused as a whole: for the parser's error, which is in `document`, or without one
    /// because it is beyond the limits, has no root, or goes on behind it.
    virtual void onNotLoaded(const TiXmlDocument& /*document*/) {}
    /// It is refused for an element that stands where only one named `expected` may.
    virtual void onOtherElement(const TiXmlElement& /*element*/, const char* /*expected*/) {}
    /// It is refused for an attribute that is missing, or empty where it must not be.
    virtual void onMissingAttribute(const TiXmlElement& /*element*/, const char* /*name*/) {}
    /// An element of the name that is expected; its children and what it is refused for follow.
    virtual void onElement(const TiXmlElement& /*element*/) {}
};

/// Reads the manifest `path` into `modules`. A file that does not exist is an empty category.
/// Relative paths become relative to the manifest's directory. Returns a `Velk_result`; `modules`
/// is complete when that is `VELK_OK` and to be thrown away otherwise.
int readManifest(const std::string& path, std::vector<LoadModule>& modules);
int readManifest(const std::string& path, std::vector<LoadModule>& modules,
                 ManifestObserverI& observer);

} // namespace platform::loadmodules
