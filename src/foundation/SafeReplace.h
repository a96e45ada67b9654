#pragma once

#include "foundation/CZoltaFilePath.h"

#include <cstdio>
#include <functional>

// The program's own files (records, categories document, merged manifest, stored configuration,
// state files) are never rewritten in place: the new bytes go to a hidden file beside the target,
// are synced, and the file is renamed onto the target. At every moment the target is the old file
// or the whole new one, and a write that fails (a full disk) leaves the old file as it was.

// The hidden name beside `target` that a replacement is written to first.
CZoltaFilePath ReplacementFileFor(const CZoltaFilePath& target);

// Replaces `target` with what `write` puts into the open file; `write` returns false on failure.
bool ReplaceFileWith(const CZoltaFilePath& target, const std::function<bool(std::FILE*)>& write);

// Replaces `target` with a copy of `source`.
bool ReplaceFileFrom(const CZoltaFilePath& target, const CZoltaFilePath& source);

// Replaces `target` with the file `source` itself when it is a plain file on the same file
// system: renamed beside the target, given the times of now, synced and renamed onto it, and
// gone from where it was. Otherwise like ReplaceFileFrom, and `source` stays.
bool ReplaceFileByMove(const CZoltaFilePath& target, const CZoltaFilePath& source);

// Puts the file `source` at `target`, replacing what stands there (a link is replaced, never
// written through). With `move` the file is renamed there when both lie on one file system and
// `source` is gone afterwards; otherwise, or across file systems, its bytes are copied into a new
// file. Either way `target` ends up with the times of a file just written.
bool MoveOrCopyFile(const CZoltaFilePath& source, const CZoltaFilePath& target, bool move);

// Deletes what replacements cut short by a killed process left in `folder`.
void RemoveStaleReplacements(const CZoltaDirectoryPath& folder);
