#pragma once

#include <string>
#include <vector>

namespace curatool::test {

// Every test process runs inside its own scratch tree: HOME, XDG_CONFIG_HOME, TMPDIR and
// CURATOOL_ROOT all point below it, so nothing a test does reaches the real system.
const std::string& ScratchRoot();

// True when this process made the scratch tree (and so removes it at exit).
bool OwnsScratchRoot();

// A fresh, empty folder below the scratch root.
std::string MakeScratchDir(const std::string& name);

// Writes bytes to a file, creating parent folders; returns false on failure.
bool WriteFile(const std::string& path, const std::string& bytes);

// Reads a whole file; empty when it cannot be read.
std::string ReadFile(const std::string& path);

bool Exists(const std::string& path);

// Every regular file below `folder` (absolute paths, sorted); empty when there is no folder.
std::vector<std::string> FilesBelow(const std::string& folder);

}  // namespace curatool::test
