#pragma once

#include <string>
#include <vector>

#include "mappings/Findings.h"

namespace dolqctl {

// Manifests as the embedded load-module handler reads them. An error is a manifest that it refuses,
// or a mapping file that the library does not find in it.

/// Whether somebody meant `text` to be a manifest: its root element is named, or nearly named, like
/// that of one.
bool isManifest(const XmlText& text);

/// Adds the mistakes in `path`, whose text is `text`.
void checkManifest(const std::string& path, const XmlText& text, Findings& findings);

/// The mistakes in `path`, which is read as a manifest whatever it is. One that does not exist is
/// an error here; to the handler it is an empty category.
std::vector<Finding> findManifestMistakes(const std::string& path);

} // namespace dolqctl
