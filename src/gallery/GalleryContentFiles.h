#pragma once

#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"
#include "foundation/ZoltaResult.h"

#include <functional>

struct CGalleryActivity;
struct CGalleryManifest;

// The content files of a gallery: each activity names one file relative to the manifest's
// folder. Names come from packages and records, so they are checked before any file is
// touched: only a relative name without a ".." component can name a file of the folder.

bool IsContentHrefSafe(const wchar_t* href);

// `folder` + "/" + `href`, as written.
CZoltaFilePath GetContentPath(const CZoltaDirectoryPath& folder, const wchar_t* href);

// The path with "." and ".." components and doubled separators resolved on the text alone,
// for comparing names of the same file.
CAtlString NormalizeContentPath(const CAtlString& path);

// Whether `inner` lies strictly or exactly within `outer` once links are resolved as far as
// they exist.
bool IsPathInside(const CAtlString& inner, const CAtlString& outer);

// Every activity of the tree in order: organizations, then each category's activities before
// its child categories. The visitor returns false to stop.
void ForEachActivity(const CGalleryManifest& manifest, const std::function<bool(CGalleryActivity&)>& visit);

// Copies the file of one activity from `from` into `to`, replacing what stands there. E_FAIL
// for an unsafe name, a target that would end up outside `to`, or a failed copy. A source that
// is the target itself is left alone.
[[nodiscard]] HRESULT CopyContentFile(const wchar_t* href, const CZoltaDirectoryPath& from,
                                      const CZoltaDirectoryPath& to);

// CopyContentFile for every activity of the tree, stopping at the first failure.
[[nodiscard]] HRESULT CopyContentFiles(const CGalleryManifest& manifest, const CZoltaDirectoryPath& from,
                                       const CZoltaDirectoryPath& to);
