#pragma once

#include <filesystem>

namespace platform::ntf {

/// The notification log's path: RUXA_NTF_LOG; else ruxa/notifications.jsonl in XDG_STATE_HOME or in
/// ~/.local/state. Absolute; empty when none of them says where, or the program runs with another
/// user's rights and must not trust them.
std::filesystem::path notificationLogPath();

} // namespace platform::ntf
