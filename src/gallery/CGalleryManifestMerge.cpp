#include "gallery/CGalleryManifestIO.h"

#include "gallery/CGalleryActivity.h"
#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryMergeIndex.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/CGalleryOrganization.h"
#include "gallery/GalleryContentFiles.h"
#include "gallery/GalleryText.h"
#include "gallery/lom/LomMetadata.h"
#include "gallery/ManifestLock.h"
#include "foundation/SafeReplace.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

// Drops the marked children from a source list in one pass; they now belong elsewhere.
template <class Node>
void DetachMarked(CGalleryList<Node>& list, const std::vector<bool>& moved)
{
    std::uint32_t kept = 0;
    for (std::uint32_t i = 0; i < list.m_count; ++i) {
        if (!moved[i]) {
            list.m_array[kept++] = list.m_array[i];
        }
    }
    list.m_count = kept;
}

HRESULT ReplaceTexts(CGalleryMetadata& target, const CGalleryMetadata& source)
{
    HRESULT result = target.m_keywords->CopyFrom(*source.m_keywords);
    if (SUCCEEDED(result)) {
        result = target.m_titles->CopyFrom(*source.m_titles);
    }
    return result;
}

HRESULT UpdateActivity(CGalleryActivity& target, const CGalleryActivity& source)
{
    HRESULT result = target.SetHref(source.m_href);
    if (SUCCEEDED(result)) {
        result = ReplaceTexts(*target.m_metadata, *source.m_metadata);
    }
    if (SUCCEEDED(result)) {
        result = target.m_metadata->SetFormat(source.m_metadata->m_format);
    }
    if (SUCCEEDED(result)) {
        result = target.m_metadata->SetSortKey(source.m_metadata->m_sortKey);
    }
    return result;
}

// Merges the tree of one manifest into another by identifier, moving what is new and
// refreshing what is known. Look-ups go through the target's index.
class CTreeMerger {
public:
    CTreeMerger(CGalleryManifest& target, CGalleryMergeIndex& index)
        : m_target(target),
          m_index(index)
    {}

    HRESULT MergeOrganizations(CGalleryManifest& source, CGalleryFolder** outFirstItem)
    {
        CGalleryOrganizationList& organizations = *source.GetOrganizations();
        std::vector<bool> moved(organizations.GetCount(), false);
        HRESULT result = S_OK;
        for (std::uint32_t i = 0; SUCCEEDED(result) && i < organizations.GetCount(); ++i) {
            CGalleryOrganization* organization = organizations.GetAt(i);
            CGalleryOrganizationList& targetList = *m_target.GetOrganizations();
            CGalleryOrganization* known = m_index.Find(targetList, organization->GetIdentifier());
            CGalleryOrganization* handled = known;
            if (!known) {
                result = m_target.AddOrganization(organization);
                if (SUCCEEDED(result)) {
                    moved[i] = true;
                    m_index.NoteAppended(targetList);
                    handled = organization;
                }
            } else {
                result = ReplaceTexts(*known->m_metadata, *organization->m_metadata);
                if (SUCCEEDED(result)) {
                    result = MergeFolders(*known->m_items, *organization->m_items, nullptr, known);
                }
            }
            if (SUCCEEDED(result) && outFirstItem && handled && handled->m_items->GetCount() > 0) {
                *outFirstItem = handled->m_items->GetAt(0);
            }
        }
        DetachMarked(organizations, moved);
        return result;
    }

private:
    HRESULT MergeFolders(CGalleryFolderList& targetList, CGalleryFolderList& sourceList, CGalleryFolder* parent,
                         CGalleryOrganization* organization)
    {
        std::vector<bool> moved(sourceList.GetCount(), false);
        HRESULT result = S_OK;
        for (std::uint32_t i = 0; SUCCEEDED(result) && i < sourceList.GetCount(); ++i) {
            CGalleryFolder* folder = sourceList.GetAt(i);
            CGalleryFolder* known = m_index.Find(targetList, folder->GetIdentifier());
            if (!known) {
                result = parent ? parent->AddChild(folder) : organization->AddItem(folder);
                if (SUCCEEDED(result)) {
                    moved[i] = true;
                    m_index.NoteAppended(targetList);
                }
                continue;
            }
            result = ReplaceTexts(*known->m_metadata, *folder->m_metadata);
            if (SUCCEEDED(result)) {
                result = MergeFolders(*known->m_children, *folder->m_children, known, organization);
            }
            if (SUCCEEDED(result)) {
                result = MergeActivities(*known, *folder);
            }
        }
        DetachMarked(sourceList, moved);
        return result;
    }

    HRESULT MergeActivities(CGalleryFolder& target, CGalleryFolder& source)
    {
        CGalleryActivityList& sourceList = *source.m_activities;
        std::vector<bool> moved(sourceList.GetCount(), false);
        HRESULT result = S_OK;
        for (std::uint32_t i = 0; SUCCEEDED(result) && i < sourceList.GetCount(); ++i) {
            CGalleryActivity* activity = sourceList.GetAt(i);
            CGalleryActivity* known = m_index.Find(*target.m_activities, activity->GetIdentifier());
            if (!known) {
                result = target.AddActivity(activity);
                if (SUCCEEDED(result)) {
                    moved[i] = true;
                    m_index.NoteAppended(*target.m_activities);
                }
            } else {
                result = UpdateActivity(*known, *activity);
            }
        }
        DetachMarked(sourceList, moved);
        return result;
    }

    CGalleryManifest& m_target;
    CGalleryMergeIndex& m_index;
};

// Swaps the organizations of two manifests and points each at its new owner.
void SwapOrganizations(CGalleryManifest& a, CGalleryManifest& b)
{
    std::swap(a.m_organizations, b.m_organizations);
    for (CGalleryManifest* manifest : {&a, &b}) {
        CGalleryOrganizationList& organizations = *manifest->GetOrganizations();
        for (std::uint32_t i = 0; i < organizations.GetCount(); ++i) {
            organizations.GetAt(i)->m_manifest = manifest;
        }
    }
}

std::unordered_set<std::wstring> ReferencedFiles(const CGalleryManifest& manifest, const CZoltaDirectoryPath& folder)
{
    std::unordered_set<std::wstring> names;
    ForEachActivity(manifest, [&](CGalleryActivity& activity) {
        if (!IsBlankText(activity.m_href)) {
            names.insert(NormalizeContentPath(GetContentPath(folder, activity.m_href).GetPath()).GetString());
        }
        return true;
    });
    return names;
}

}  // namespace

namespace {

// One content file of a package on its way into the gallery.
struct StagedFile {
    CZoltaFilePath source;
    CZoltaFilePath target;
    // Where the file waits, out of sight, to be renamed onto the target once all are there:
    // beside the target, or in the extraction it came from.
    CZoltaFilePath staged;
    bool plain = false;  // the source is a plain file, not a link: it may move
};

// The gallery files that records list: those of the package's own earlier record first, the
// whole merged tree only when that does not settle it.
class OwnedFiles {
public:
    OwnedFiles(const CGalleryManifest& gallery, const CZoltaFilePath& oldRecord, const CZoltaDirectoryPath& folder)
        : m_gallery(gallery),
          m_oldRecord(oldRecord),
          m_folder(folder)
    {}

    bool Contains(const CZoltaFilePath& file)
    {
        const std::wstring key = NormalizeContentPath(file.GetPath()).GetString();
        if (!m_recordRead) {
            m_recordRead = true;
            if (m_oldRecord.Exists()) {
                CGalleryManifest record;
                if (SUCCEEDED(CGalleryManifestIO::Open(record, m_oldRecord.GetPath().GetString(), nullptr, false))) {
                    m_record = ReferencedFiles(record, m_folder);
                }
                CGalleryManifestIO::Close(record);
            }
        }
        if (m_record.count(key) != 0) {
            return true;
        }
        if (!m_treeRead) {
            m_treeRead = true;
            m_tree = ReferencedFiles(m_gallery, m_folder);
        }
        return m_tree.count(key) != 0;
    }

private:
    const CGalleryManifest& m_gallery;
    CZoltaFilePath m_oldRecord;
    CZoltaDirectoryPath m_folder;
    bool m_recordRead = false;
    bool m_treeRead = false;
    std::unordered_set<std::wstring> m_record;
    std::unordered_set<std::wstring> m_tree;
};

void RemoveStaged(const std::vector<StagedFile>& files)
{
    for (const StagedFile& file : files) {
        file.staged.Remove();
    }
}

void Tell(CAtlString* reason, const CAtlString& text)
{
    if (reason && reason->IsEmpty()) {
        *reason = text;
    }
}

// Whether a file or a folder stands at `path` (a link counts by what it leads to), in one call.
bool StandsThere(const CZoltaFilePath& path)
{
    struct stat status {};
    return ::stat(ToFileSystemEncoding(path.GetPath()).constData(), &status) == 0 &&
           (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

// Whether the file `path` is there (a link counts by what it leads to), and whether it is a plain
// file itself, in one call for the plain file that a package's file mostly is.
bool FileIsThere(const CZoltaFilePath& path, bool& plain)
{
    const QByteArray name = ToFileSystemEncoding(path.GetPath());
    struct stat status {};
    plain = ::lstat(name.constData(), &status) == 0 && S_ISREG(status.st_mode);
    return plain || (::stat(name.constData(), &status) == 0 && S_ISREG(status.st_mode));
}

// The mount that `folder` lies on, when the system tells it: a rename within one mount cannot
// fail for lying across two.
std::optional<std::uint64_t> MountOf(const CZoltaDirectoryPath& folder)
{
    struct statx status {};
    if (::statx(AT_FDCWD, ToFileSystemEncoding(folder.GetPath()).constData(), 0, STATX_MNT_ID, &status) != 0 ||
        (status.stx_mask & STATX_MNT_ID) == 0)
        return std::nullopt;
    return status.stx_mnt_id;
}

// Checks every content file of the package and puts each beside its target, touching nothing
// of the gallery: a package goes in whole or not at all. Only a file that a record lists is
// ever replaced; a file of the user's that stands in the way stops the package. The files of a
// temporary extraction are moved there (`move`), any others copied. A file of an extraction on
// the target's own mount is already out of sight where it is: it waits there and is renamed
// straight onto its target.
HRESULT StageContentFiles(const CGalleryManifest& package, const CZoltaDirectoryPath& from,
                          const CZoltaDirectoryPath& to, bool move, OwnedFiles& owned, std::vector<StagedFile>& staged,
                          CAtlString* reason)
{
    std::vector<StagedFile> files;
    std::unordered_set<std::wstring> seen;
    // Each folder of the gallery is checked, and made, once per package: most packages name one.
    std::unordered_set<std::wstring> safeFolders;
    std::unordered_map<std::wstring, bool> madeFolders;  // whether an extracted file can wait where it is
    const std::optional<std::uint64_t> fromMount = move ? MountOf(from) : std::nullopt;
    HRESULT result = S_OK;
    ForEachActivity(package, [&](CGalleryActivity& activity) {
        const wchar_t* href = activity.m_href;
        StagedFile file{GetContentPath(from, href), GetContentPath(to, href), CZoltaFilePath()};
        bool safe = IsContentHrefSafe(href);
        if (safe) {
            const CAtlString folder = file.target.GetFolder().GetPath();
            if (safeFolders.count(folder.GetString()) == 0) {
                safe = IsPathInside(folder, to.GetPath());
                if (safe)
                    safeFolders.insert(folder.GetString());
            }
        }
        if (!safe) {
            Tell(reason, CAtlString(L"the package names a file outside its place: ") + CAtlString(href));
            result = E_FAIL;
            return false;
        }
        if (!FileIsThere(file.source, file.plain)) {
            Tell(reason, CAtlString(L"the package lacks its file ") + CAtlString(href));
            result = E_FAIL;
            return false;
        }
        if (StandsThere(file.target) && !owned.Contains(file.target)) {
            Tell(reason, CAtlString(L"a file that is not part of the gallery is in the way: ") + file.target.GetPath());
            result = E_FAIL;
            return false;
        }
        if (file.source.IsSameFile(file.target) ||
            !seen.insert(NormalizeContentPath(file.target.GetPath()).GetString()).second) {
            return true;  // already in place, or named twice
        }
        file.staged = ReplacementFileFor(file.target);
        files.push_back(file);
        return true;
    });
    for (StagedFile& file : files) {
        if (FAILED(result)) {
            break;
        }
        const CZoltaDirectoryPath folder = file.target.GetFolder();
        auto made = madeFolders.find(folder.GetPath().GetString());
        if (made == madeFolders.end() && folder.Create()) {
            made = madeFolders.emplace(folder.GetPath().GetString(), fromMount && MountOf(folder) == fromMount).first;
        }
        if (made != madeFolders.end() && made->second && file.plain) {
            file.staged = file.source;
            continue;
        }
        if (made == madeFolders.end() || !MoveOrCopyFile(file.source, file.staged, move && file.plain)) {
            Tell(reason, CAtlString(L"could not write ") + file.target.GetPath() + L" (" +
                             CAtlString(QString::fromLocal8Bit(std::strerror(errno))) + L")");
            result = E_FAIL;
        }
    }
    if (FAILED(result)) {
        RemoveStaged(files);
        return result;
    }
    staged = std::move(files);
    return S_OK;
}

}  // namespace

HRESULT CGalleryManifestIO::MergeFrom(CGalleryManifest& manifest, CGalleryManifest* other,
                                      CGalleryFolder** outFirstItem, CAtlString* reason)
{
    if (!other) {
        return E_INVALIDARG;
    }
    // Without an identifier the package has no record of its own to be removed by later.
    if (IsBlankText(other->GetIdentifier())) {
        Tell(reason, CAtlString(L"the package has no identifier"));
        return E_FAIL;
    }
    const CZoltaDirectoryPath uninstall = GetUninstallFolder(manifest);
    if (uninstall.IsEmpty() || !uninstall.Create()) {
        return E_FAIL;
    }
    const CZoltaFilePath record = GetInstallRecordPath(uninstall, other->GetIdentifier());
    const bool replaced = record.Exists();
    const CZoltaDirectoryPath folder = GetFolder(manifest);
    OwnedFiles owned(manifest, record, folder);
    std::vector<StagedFile> staged;
    // A temporary extraction is deleted after the merge: its files may move rather than be copied.
    const CZoltaDirectoryPath from = GetFolder(*other);
    const CZoltaDirectoryPath temporary = GetTempFolder();
    const bool move =
        other->m_extracted && !from.IsEmpty() && from != temporary && IsPathInside(from.GetPath(), temporary.GetPath());
    HRESULT result = StageContentFiles(*other, from, folder, move, owned, staged, reason);
    if (FAILED(result)) {
        return result;
    }
    // The record first: a run killed from here on is completed by the journal, which knows it.
    const CZoltaFilePath document(CAtlString(other->GetPath()));
    if (!(move ? ReplaceFileByMove(record, document) : ReplaceFileFrom(record, document))) {
        Tell(reason, CAtlString(L"could not write ") + record.GetPath() + L" (" +
                         CAtlString(QString::fromLocal8Bit(std::strerror(errno))) + L")");
        RemoveStaged(staged);
        return E_FAIL;
    }
    for (const StagedFile& file : staged) {
        // A link at the target is replaced by the rename itself, never followed.
        if (std::rename(ToFileSystemEncoding(file.staged.GetPath()).constData(),
                        ToFileSystemEncoding(file.target.GetPath()).constData()) != 0)
        {
            result = E_FAIL;
        }
    }
    if (FAILED(result)) {
        RemoveStaged(staged);
        return result;
    }
    const std::shared_ptr<CGalleryMergeIndex> index = CGalleryMergeIndex::ForManifest(manifest);
    result = CTreeMerger(manifest, *index).MergeOrganizations(*other, outFirstItem);
    if (FAILED(result)) {
        return result;
    }
    manifest.SetModified(true);
    Close(*other);
    return replaced ? S_GALLERY_RECORD_REPLACED : S_OK;
}

HRESULT CGalleryManifestIO::CollectRecordFiles(const CGalleryManifest& manifest, const CZoltaFilePath& record,
                                               std::vector<CAtlString>& files)
{
    CGalleryManifest installed;
    const HRESULT result = Open(installed, record.GetPath().GetString(), nullptr, false);
    if (SUCCEEDED(result)) {
        for (const std::wstring& file : ReferencedFiles(installed, GetFolder(manifest))) {
            files.push_back(CAtlString(file.c_str()));
        }
    }
    Close(installed);
    return result;
}

HRESULT CGalleryManifestIO::RebuildFromInstalled(CGalleryManifest& manifest, const std::vector<CAtlString>& released)
{
    const CZoltaDirectoryPath folder = GetFolder(manifest);
    if (folder.IsEmpty()) {
        return E_FAIL;
    }
    std::vector<CZoltaFilePath> records;
    GetUninstallFolder(manifest).ListFiles(L"imsmanifest*.xml", records);

    CGalleryManifest rebuilt;
    if (!rebuilt.IsInitialized()) {
        return E_OUTOFMEMORY;
    }
    CGalleryMergeIndex index;
    for (const CZoltaFilePath& record : records) {
        CGalleryManifest installed;
        HRESULT result = Open(installed, record.GetPath().GetString(), nullptr, false);
        if (SUCCEEDED(result)) {
            result = CTreeMerger(rebuilt, index).MergeOrganizations(installed, nullptr);
        }
        Close(installed);
        if (FAILED(result)) {
            // A record that can't be read would make its files look unused: stop before any goes.
            return result;
        }
    }

    CManifestLockHolder lock;
    HRESULT result = CopyMetadataForRebuild(*rebuilt.m_metadata, *manifest.m_metadata);
    if (FAILED(result)) {
        return result;
    }
    const CZoltaFilePath manifestFile(CAtlString(manifest.GetPath()));
    const std::unordered_set<std::wstring> referenced = ReferencedFiles(rebuilt, folder);
    // Only files that a record listed may go: those of the tree as it stood, and those of records
    // dropped since. A file no record ever named (the user's own) is never touched.
    std::unordered_set<std::wstring> candidates = ReferencedFiles(manifest, folder);
    for (const CAtlString& file : released) {
        candidates.insert(NormalizeContentPath(file).GetString());
    }

    // The new tree and metadata take the place of the old; the old go with `rebuilt`.
    SwapOrganizations(manifest, rebuilt);
    std::swap(manifest.m_metadata, rebuilt.m_metadata);
    CGalleryMergeIndex::Forget(manifest);
    manifest.SetModified(true);
    result = Save(manifest, manifestFile.GetPath().GetString(), true);
    if (FAILED(result)) {
        return result;
    }
    manifest.SetModified(false);
    const CAtlString bookkeeping = GetUninstallFolder(manifest).GetPath();
    for (const std::wstring& name : candidates) {
        const CZoltaFilePath file{CAtlString(name.c_str())};
        if (referenced.count(name) != 0 || file.IsSameFile(manifestFile) || IsPathInside(file.GetPath(), bookkeeping) ||
            !IsPathInside(file.GetFolder().GetPath(), folder.GetPath()))
        {
            continue;
        }
        file.Remove();
    }
    return S_OK;
}
