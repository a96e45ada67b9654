#pragma once

#include <filesystem>

// Folder operations of the stored copy that the path classes do not offer.
namespace collection_folders {

// True when `path` lies strictly below `folder`, after resolving what exists of both. The last
// component of `path` is not resolved: a link there is the entry itself.
bool IsInside(const std::filesystem::path& path, const std::filesystem::path& folder);

// Copies a folder tree, replacing files that are there. Links are skipped: a collection's
// folder must not pull in what lies outside of it. True when everything was copied.
[[nodiscard]] bool CopyTree(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace collection_folders
