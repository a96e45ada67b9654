#include "GalleryInitializeThread.h"

#include "CGalleryFolder.h"
#include "CGalleryManifest.h"
#include "CGalleryManifestIO.h"
#include "CGalleryMetadata.h"
#include "CGalleryOrganization.h"
#include "CSettingsStore.h"
#include "GalleryIdentifiers.h"
#include "GalleryLibrary.h"
#include "GalleryPlaces.h"
#include "ManifestLock.h"
#include "Trace.h"

#include <QStringList>

#include <new>

namespace {

const wchar_t kCancelling[] = L"CGallery::Initialize : cancelling...\n";

CAtlString Placeholder(const wchar_t* rest)
{
    return CAtlString(PLACEHOLDER_URI_BASE) + rest;
}

void DeleteManifest(CGalleryManifest* manifest)
{
    CGalleryManifestIO::Close(*manifest);
    delete manifest;
}

CAtlString DefaultManifestPath()
{
    const CAtlString fallback = GetUserGalleryFolder().GetFile(L"imsmanifest.xml").GetPath();
    const CAtlString value = CSettingsStore::ReadString(true, kGallerySettingsSection, L"DefaultManifest", fallback);
    return value.IsEmpty() ? fallback : value;
}

}  // namespace

CGalleryInitializeThread::CGalleryInitializeThread() = default;

CGalleryInitializeThread::~CGalleryInitializeThread()
{
    Cancel();
    Wait();
}

int CGalleryInitializeThread::Work()
{
    return static_cast<int>(Run());
}

HRESULT CGalleryInitializeThread::OnManifestProgress(float)
{
    return IsCancelled() ? E_ABORT : S_OK;
}

HRESULT CGalleryInitializeThread::Run()
{
    CManifestLockHolder lock;

    g_language = CSettingsStore::ReadString(true, kLanguageSettingsSection, L"LanguageID", L"en");
    g_enableContentCreatorTools =
        CSettingsStore::ReadInt(true, kGallerySettingsSection, L"EnableContentCreatorTools", 0) != 0;
    g_browseChunking = CSettingsStore::ReadInt(true, kGallerySettingsSection, L"BrowseChunking", 0) != 0;

    if (!g_searchHistory && !(g_searchHistory = new (std::nothrow) std::vector<CAtlString>))
        return E_OUTOFMEMORY;
    if (!g_galleryList && !(g_galleryList = new (std::nothrow) std::vector<std::shared_ptr<CGalleryManifest>>))
        return E_OUTOFMEMORY;

    const CAtlString defaultManifest = DefaultManifestPath();
    if (!g_noCache)
        CZoltaFilePath(defaultManifest).GetFolder().Create();

    const CZoltaFilePath myContent = GetMyContentManifestPath();
    if (!myContent.Exists())
        CreateMyContent(myContent);
    MigrateOldMyContent();

    if (!IsCancelled()) {
        g_sharedGallery = OpenGallery(GetSharedGalleryManifestPath().GetPath());
        if (g_sharedGallery)
            g_galleryList->push_back(g_sharedGallery);
    }
    if (!IsCancelled()) {
        g_defaultManifest = OpenGallery(defaultManifest);
        if (g_defaultManifest)
            g_galleryList->push_back(g_defaultManifest);
    }
    if (!IsCancelled() && !g_noCache) {
        OpenRegisteredGalleries(false);
        OpenRegisteredGalleries(true);
        OpenRepositories();
    }
    if (IsCancelled()) {
        Trace(kCancelling);
        return E_ABORT;
    }
    return S_OK;
}

HRESULT CGalleryInitializeThread::CreateMyContent(const CZoltaFilePath& path)
{
    std::shared_ptr<CGalleryManifest> manifest(new (std::nothrow) CGalleryManifest, DeleteManifest);
    if (!manifest || !manifest->IsInitialized())
        return E_OUTOFMEMORY;
    HRESULT result = manifest->SetPath(path.GetPath().GetString());
    if (SUCCEEDED(result))
        result = manifest->m_metadata->SetIdentifier(Placeholder(L"/default?manifest=My%20Content").GetString());
    CGalleryOrganization* organization = nullptr;
    if (SUCCEEDED(result))
        result = CGalleryOrganization::Create(&organization);
    if (SUCCEEDED(result)) {
        organization->m_metadata->SetIdentifier(Placeholder(L"/default?organization=My%20Content").GetString());
        organization->m_metadata->m_titles->Add(L"en", L"My Content");
        result = manifest->AddOrganization(organization);
        if (FAILED(result))
            CGalleryOrganization::Destroy(organization);
    }
    CGalleryFolder* root = nullptr;
    if (SUCCEEDED(result))
        result = CGalleryFolder::Create(&root);
    if (SUCCEEDED(result)) {
        root->m_metadata->SetIdentifier(Placeholder(L"/My%20Content").GetString());
        root->m_metadata->m_titles->Add(L"en", L"My Content");
        result = organization->AddItem(root);
        if (FAILED(result))
            CGalleryFolder::Destroy(root);
    }
    if (SUCCEEDED(result)) {
        path.GetFolder().Create();
        result = CGalleryManifestIO::Save(*manifest, path.GetPath().GetString(), !g_noCache);
    }
    if (SUCCEEDED(result))
        g_myContent = manifest;
    return result;
}

void CGalleryInitializeThread::MigrateOldMyContent()
{
    // The folder of versions before 9.2 does not exist here: there is never anything to import.
    if (!GetOldMyContentFolder().Exists())
        return;
    Trace(L"CGallery::Initialize : migrating pre-9.2 My Content folders...\n");
}

std::shared_ptr<CGalleryManifest> CGalleryInitializeThread::OpenGallery(const CAtlString& path)
{
    std::shared_ptr<CGalleryManifest> manifest(new (std::nothrow) CGalleryManifest, DeleteManifest);
    if (!manifest || !manifest->IsInitialized())
        return nullptr;
    if (IsCancelled()) {
        Trace(kCancelling);
        return nullptr;
    }
    const HRESULT result = CGalleryManifestIO::Open(*manifest, path.GetString(), this, !g_noCache);
    if (FAILED(result)) {
        Trace(L"CGallery::Initialize : error opening manifest %s (HRESULT = 0x%x)\n", path.GetString(),
              static_cast<unsigned>(result));
        return nullptr;
    }
    if (result == S_FALSE) {
        Trace(L"CGallery::Initialize : there is no manifest at %s\n", path.GetString());
        return nullptr;
    }
    return manifest;
}

void CGalleryInitializeThread::AddGallery(const CAtlString& path)
{
    if (IsCancelled() || path.IsEmpty())
        return;
    std::shared_ptr<CGalleryManifest> manifest = OpenGallery(path);
    if (manifest && !IsCancelled())
        g_galleryList->push_back(manifest);
}

void CGalleryInitializeThread::OpenRegisteredGalleries(bool userScope)
{
    const CAtlString section(userScope ? kUserGalleriesSection : kMachineGalleriesSection);
    std::vector<CAtlString> names;
    CSettingsStore::ListSection(userScope, section, names);
    for (const CAtlString& name : names) {
        if (IsCancelled())
            return;
        AddGallery(CSettingsStore::ReadString(userScope, section + L"\\" + name, L"ImsManifestXml", CAtlString()));
    }
}

void CGalleryInitializeThread::OpenRepositories()
{
    std::vector<CZoltaDirectoryPath> repositories;
    GetRepositories(repositories);
    for (const CZoltaDirectoryPath& repository : repositories) {
        std::vector<CZoltaFilePath> manifests;
        ScanGalleryFolder(repository, manifests);
        for (const CZoltaFilePath& manifest : manifests) {
            if (IsCancelled())
                return;
            AddGallery(manifest.GetPath());
        }
    }
}

void CGalleryInitializeThread::GetRepositories(std::vector<CZoltaDirectoryPath>& out)
{
    const CAtlString value = CSettingsStore::ReadString(true, kGallerySettingsSection, L"Repositories", CAtlString());
    const QStringList entries = value.ToQString().split(QLatin1Char('|'));
    for (const QString& entry : entries) {
        if (entry.trimmed().isEmpty())
            continue;
        const CZoltaDirectoryPath folder(entry);
        if (folder.Exists())
            out.push_back(folder);
    }
}

void CGalleryInitializeThread::ScanGalleryFolder(const CZoltaDirectoryPath& folder, std::vector<CZoltaFilePath>& out)
{
    // Every subfolder: "*.*" named all of them where this scan comes from.
    std::vector<CZoltaDirectoryPath> children;
    folder.ListFolders(L"*", children);
    for (const CZoltaDirectoryPath& child : children) {
        if (child.GetName() == L"CVS")
            continue;
        const CZoltaFilePath manifest = child.GetFile(L"imsmanifest.xml");
        if (manifest.Exists())
            out.push_back(manifest);
    }
}
