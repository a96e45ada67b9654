#include "CGalleryManifestIO.h"

#include "CGalleryActivity.h"
#include "CGalleryFolder.h"
#include "CGalleryManifest.h"
#include "CGalleryMergeIndex.h"
#include "CGalleryMetadata.h"
#include "CGalleryOrganization.h"
#include "GalleryContentFiles.h"
#include "GalleryText.h"
#include "LomMetadata.h"
#include "ManifestLock.h"

#include <string>
#include <unordered_set>
#include <vector>

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
class CTreeMerger
{
public:
    CTreeMerger(CGalleryManifest& target, CGalleryMergeIndex& index) : m_target(target), m_index(index) {}

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

HRESULT CGalleryManifestIO::MergeFrom(CGalleryManifest& manifest, CGalleryManifest* other,
                                      CGalleryFolder** outFirstItem)
{
    if (!other) {
        return E_INVALIDARG;
    }
    const CZoltaDirectoryPath uninstall = GetUninstallFolder(manifest);
    if (uninstall.IsEmpty() || !uninstall.Create()) {
        return E_FAIL;
    }
    const CZoltaFilePath record = GetInstallRecordPath(uninstall, other->GetIdentifier());
    const bool replaced = record.Exists();
    if (replaced) {
        record.Remove();
    }
    if (!CZoltaFilePath(CAtlString(other->GetPath())).CopyTo(record)) {
        return E_FAIL;
    }
    HRESULT result = CopyContentFiles(*other, GetFolder(*other), GetFolder(manifest));
    if (FAILED(result)) {
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

HRESULT CGalleryManifestIO::RebuildFromInstalled(CGalleryManifest& manifest)
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
    std::vector<CZoltaFilePath> listing;
    folder.ListFiles(L"*.*", listing);

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
    for (const CZoltaFilePath& file : listing) {
        if (file.IsSameFile(manifestFile)) {
            continue;
        }
        if (referenced.count(NormalizeContentPath(file.GetPath()).GetString()) == 0) {
            file.Remove();
        }
    }
    return S_OK;
}
