#pragma once

#include "CAtlString.h"

// Ties collection files to this program on desktops that keep such ties in the system. On this
// platform the desktop finds the program through its own files, so both steps succeed untouched.
namespace FileAssociations {

bool Register(const CAtlString& applicationPath, const CAtlString& option);
bool Unregister();

}  // namespace FileAssociations
