#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace curatool {

// Every fixed absolute location of the system (the shared galleries folder, the system settings
// folder, /usr/local places, the update marker in /tmp) goes through here. When CURATOOL_ROOT is
// set, the location moves below that folder, so tests and trial runs never touch the real system.
std::string SystemLocation(std::string_view absolutePath);
QString SystemLocation(const QString& absolutePath);

// The value of CURATOOL_ROOT without a trailing slash; empty when unset.
std::string SystemRoot();

}  // namespace curatool
