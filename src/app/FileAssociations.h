#pragma once

#include "libZoltaAtl/CAtlString.h"

// Ties collection files to this program on desktops that keep such ties in the system. On this
// platform the desktop finds the program through its own files, so both steps succeed untouched.
namespace FileAssociations {

[[nodiscard]] bool Register(const CAtlString& applicationPath, const CAtlString& option);
[[nodiscard]] bool Unregister();

}  // namespace FileAssociations
