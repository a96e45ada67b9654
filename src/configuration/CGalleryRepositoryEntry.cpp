#include "configuration/CGalleryRepositoryEntry.h"

#include "foundation/CSettingsStore.h"

namespace {

const wchar_t* const RepositorySection = L"Software\\ZOLTA Technologies Inc.\\Gallery\\";
const wchar_t* const StoreName = L"Gallery";

}  // namespace

const wchar_t* const CGalleryRepositoryEntry::SystemGroup = L"TeamContent";
const wchar_t* const CGalleryRepositoryEntry::UserGroup = L"PersonalTeamContent";

CAtlString CGalleryRepositoryEntry::GroupSection(const CAtlString& entryGroup)
{
    return CAtlString(RepositorySection) + entryGroup;
}

CAtlString CGalleryRepositoryEntry::Section() const
{
    return GroupSection(group) + L"\\" + id;
}

bool CGalleryRepositoryEntry::IsUserScope(const CAtlString& entryGroup)
{
    return entryGroup == UserGroup;
}

bool CGalleryRepositoryEntry::Read(const CAtlString& entryGroup, const CAtlString& entryId)
{
    group = entryGroup;
    id = entryId;
    const bool userScope = IsUserScope(group);
    const CAtlString section = Section();
    const CAtlString none;
    manifestPath = CSettingsStore::ReadString(userScope, section, L"ImsManifestXml", none, nullptr, StoreName);
    metadataPath = CSettingsStore::ReadString(userScope, section, L"MetadataXml", none, nullptr, StoreName);
    applicationPath = CSettingsStore::ReadString(userScope, section, L"AppPath", none, nullptr, StoreName);
    arguments = CSettingsStore::ReadString(userScope, section, L"Args", none, nullptr, StoreName);
    enabled = CSettingsStore::ReadInt(userScope, section, L"Enabled", 1, nullptr, StoreName) != 0;
    return !manifestPath.IsEmpty() && (!metadataPath.IsEmpty() || !applicationPath.IsEmpty());
}

bool CGalleryRepositoryEntry::Write() const
{
    const bool userScope = IsUserScope(group);
    const CAtlString section = Section();
    bool written = true;
    written &= CSettingsStore::WriteString(userScope, section, L"ImsManifestXml", manifestPath, StoreName) == 0;
    written &= CSettingsStore::WriteString(userScope, section, L"MetadataXml", metadataPath, StoreName) == 0;
    written &= CSettingsStore::WriteString(userScope, section, L"AppPath", applicationPath, StoreName) == 0;
    written &= CSettingsStore::WriteString(userScope, section, L"Args", arguments, StoreName) == 0;
    written &= CSettingsStore::WriteInt(userScope, section, L"Enabled", enabled ? 1 : 0, StoreName) == 0;
    return written;
}

bool CGalleryRepositoryEntry::Remove() const
{
    const CAtlString section = Section();
    const bool removed = CSettingsStore::DeleteSection(IsUserScope(group), section, StoreName) == 0;
    // A machine-wide entry written by an ordinary user landed in the user's store.
    CSettingsStore::DeleteSection(true, section, StoreName);
    return removed;
}

void CGalleryRepositoryEntry::Clear()
{
    *this = CGalleryRepositoryEntry();
}

std::vector<CGalleryRepositoryEntry> CGalleryRepositoryEntry::List(const CAtlString& entryGroup)
{
    std::vector<CAtlString> names;
    CSettingsStore::ListSection(IsUserScope(entryGroup), GroupSection(entryGroup), names);
    std::vector<CGalleryRepositoryEntry> entries;
    for (const CAtlString& name : names) {
        CGalleryRepositoryEntry entry;
        if (entry.Read(entryGroup, name))
            entries.push_back(entry);
    }
    return entries;
}
