#pragma once

#include <string>

#include <saAis.h>

namespace dolqctl {

/// "5 (SA_AIS_ERR_TIMEOUT)"; the number alone of a code beyond those of the NTF interface.
std::string text(SaAisErrorT answer);

} // namespace dolqctl
