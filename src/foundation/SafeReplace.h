#pragma once

#include "foundation/CZoltaFilePath.h"

#include <QByteArray>

#include <cstdio>
#include <functional>
#include <utility>
#include <vector>

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
// system: renamed beside the target, synced and renamed onto it with the times it has (a file
// just written), and gone from where it was. Otherwise like ReplaceFileFrom, and `source` stays. While a
// ReplacementBatch is open on this thread the file waits beside the target for its Commit().
bool ReplaceFileByMove(const CZoltaFilePath& target, const CZoltaFilePath& source);

// Many small replacements by move settled together: one sync each costs a journal commit of the
// file system, so while a batch is open on this thread each file only goes beside its target
// (under ReplacementFileFor) with its writing to the disk started, and Commit() syncs them all,
// renames each onto its target and syncs each folder once. Until then a target holds its old
// file; whoever uses a batch must know what a killed process leaves beside the targets.
class ReplacementBatch {
public:
    ReplacementBatch();
    ~ReplacementBatch();  // commits what is still waiting
    ReplacementBatch(const ReplacementBatch&) = delete;
    ReplacementBatch& operator=(const ReplacementBatch&) = delete;

    // Whether a replacement of `target` waits in this batch.
    [[nodiscard]] bool Holds(const CZoltaFilePath& target) const;
    // False when a file could not be synced or renamed: it stays beside its target.
    [[nodiscard]] bool Commit();

    // The batch open on this thread, or null.
    static ReplacementBatch* Open();
    // Takes the file already beside `target`; false when it can't start its writing out.
    bool Add(const QByteArray& beside, const QByteArray& target);

private:
    std::vector<std::pair<QByteArray, QByteArray>> m_waiting;  // beside, target
    ReplacementBatch* m_outer = nullptr;
};

// Puts the file `source` at `target`, replacing what stands there (a link is replaced, never
// written through). With `move`, for a plain file (not a link) just written, the file is renamed
// there when both lie on one file system, times and all, and `source` is gone afterwards;
// otherwise, or across file systems, its bytes are copied into a new file. Either way `target`
// ends up with the times of a file just written.
bool MoveOrCopyFile(const CZoltaFilePath& source, const CZoltaFilePath& target, bool move);

// Deletes what replacements cut short by a killed process left in `folder`.
void RemoveStaleReplacements(const CZoltaDirectoryPath& folder);
