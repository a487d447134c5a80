#pragma once

#include <string>

#include <Velk.h>

namespace dolq::xmlconf {

/// Hears what the walk over the node's load modules comes across, in reading order. All arguments
/// last until the call returns.
class LoadModuleObserverI {
public:
    virtual ~LoadModuleObserverI() = default;

    /// The load-module handler's error code; the category counts as empty.
    virtual void onFailedCategory(const std::string& /*category*/, int /*errorCode*/) {}
    /// `matches`: it is a load module looked for, and its mapping files follow.
    virtual void onLoadModule(const std::string& /*category*/, const Velk_lm& /*loadModule*/,
                              bool /*matches*/) {}
    virtual void onMappingFile(const std::string& /*path*/) {}
};

} // namespace dolq::xmlconf
