#include "platform/ntf/LogPath.h"

#include <system_error>

#include "common/Environment.h"

namespace platform::ntf {

namespace fs = std::filesystem;
using common::trustedEnvironment;

fs::path notificationLogPath() {
    if (const fs::path log = trustedEnvironment("RUXA_NTF_LOG"); !log.empty()) {
        std::error_code noCurrentFolder;
        const fs::path absolute = fs::absolute(log, noCurrentFolder);
        return noCurrentFolder ? fs::path() : absolute;
    }
    if (const fs::path stateHome = trustedEnvironment("XDG_STATE_HOME"); stateHome.is_absolute()) {
        return stateHome / "ruxa/notifications.jsonl";
    }
    const fs::path home = trustedEnvironment("HOME");
    return home.is_absolute() ? home / ".local/state/ruxa/notifications.jsonl" : fs::path();
}

} // namespace platform::ntf
