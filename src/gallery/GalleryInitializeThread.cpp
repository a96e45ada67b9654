#include "gallery/GalleryInitializeThread.h"

#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryManifestIO.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/CGalleryOrganization.h"
#include "foundation/CSettingsStore.h"
#include "gallery/GalleryIdentifiers.h"
#include "gallery/GalleryLibrary.h"
#include "gallery/GalleryPlaces.h"
#include "gallery/ManifestLock.h"
#include "foundation/Trace.h"

#include "gallery/CGalleryActivity.h"
#include "foundation/CQtGalleryThreadBase.h"

#include <QFile>
#include <QStringList>

#include <tinyxml2.h>

#include <cstring>
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

// One item of the old folder: its title and the file that holds it.
struct OldItem {
    CAtlString title;
    CZoltaFilePath file;
};

CAtlString WithoutExtension(const CAtlString& name)
{
    const int dot = name.ReverseFind(L'.');
    return dot > 0 ? name.Left(dot) : name;
}

// The items of an old catalogue: <content><items><record><name/><file/></record>..., each file
// named relative to the catalogue.
void ReadOldCatalogue(const CZoltaFilePath& path, std::vector<OldItem>& out)
{
    QFile file(path.ToQString());
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray bytes = file.readAll();
    tinyxml2::XMLDocument document;
    if (document.Parse(bytes.constData(), static_cast<size_t>(bytes.size())) != tinyxml2::XML_SUCCESS)
        return;
    const tinyxml2::XMLElement* root = document.RootElement();
    const tinyxml2::XMLElement* items =
        root && std::strcmp(root->Name(), "content") == 0 ? root->FirstChildElement("items") : nullptr;
    for (const tinyxml2::XMLElement* record = items ? items->FirstChildElement("record") : nullptr; record;
         record = record->NextSiblingElement("record"))
    {
        const tinyxml2::XMLElement* name = record->FirstChildElement("name");
        const tinyxml2::XMLElement* item = record->FirstChildElement("file");
        if (!item || !item->GetText())
            continue;
        const CZoltaFilePath target = path.GetFolder().GetFile(CAtlString::FromUtf8(item->GetText()));
        const CAtlString title =
            name && name->GetText() ? CAtlString::FromUtf8(name->GetText()) : WithoutExtension(target.GetName());
        out.push_back({title, target});
    }
}

// Every item below `folder`: each ".galleryitem" file, and the records of each old catalogue.
void CollectOldItems(const CZoltaDirectoryPath& folder, std::vector<OldItem>& out)
{
    std::vector<CZoltaFilePath> files;
    folder.ListFiles(L"*.galleryitem", files);
    for (const CZoltaFilePath& file : files)
        out.push_back({WithoutExtension(file.GetName()), file});
    files.clear();
    folder.ListFiles(L"*.xml", files);
    for (const CZoltaFilePath& file : files)
        ReadOldCatalogue(file, out);
    std::vector<CZoltaDirectoryPath> children;
    folder.ListFolders(L"*", children);
    for (const CZoltaDirectoryPath& child : children)
        CollectOldItems(child, out);
}

CGalleryFolder* RootCategory(const CGalleryManifest& manifest)
{
    const CGalleryOrganizationList* organizations = manifest.GetOrganizations();
    if (!organizations || organizations->m_count == 0)
        return nullptr;
    const CGalleryFolderList* items = organizations->m_array[0]->m_items;
    return items && items->m_count > 0 ? items->m_array[0] : nullptr;
}

}  // namespace

std::shared_ptr<CGalleryManifest> OpenGalleryManifest(const CAtlString& path, const CQtGalleryThreadBase& thread,
                                                      IGalleryManifestOpenObserver* observer)
{
    std::shared_ptr<CGalleryManifest> manifest(new (std::nothrow) CGalleryManifest, DeleteManifest);
    if (!manifest || !manifest->IsInitialized())
        return nullptr;
    if (thread.IsCancelled()) {
        Trace(kCancelling);
        return nullptr;
    }
    const HRESULT result = CGalleryManifestIO::Open(*manifest, path.GetString(), observer, !g_noCache);
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

CGalleryInitializeThread::CGalleryInitializeThread()
    : m_oldMyContent(GetOldMyContentFolder())
{}

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
    if (!myContent.Exists())  // a failed gallery is skipped: start-up goes on without it
        static_cast<void>(CreateMyContent(myContent));
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
        const CAtlString identifier = Placeholder(L"/default?organization=My%20Content");
        result = organization->m_metadata->SetIdentifier(identifier.GetString());
        if (SUCCEEDED(result))
            result = organization->m_metadata->m_titles->Add(L"en", L"My Content");
        if (SUCCEEDED(result))
            result = manifest->AddOrganization(organization);
        if (FAILED(result))
            CGalleryOrganization::Destroy(organization);
    }
    CGalleryFolder* root = nullptr;
    if (SUCCEEDED(result))
        result = CGalleryFolder::Create(&root);
    if (SUCCEEDED(result)) {
        result = root->m_metadata->SetIdentifier(Placeholder(L"/My%20Content").GetString());
        if (SUCCEEDED(result))
            result = root->m_metadata->m_titles->Add(L"en", L"My Content");
        if (SUCCEEDED(result))
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
    // In the product the old folder is "/dev/null", no folder: there is nothing to import.
    if (!m_oldMyContent.Exists())
        return;
    Trace(L"CGallery::Initialize : migrating pre-9.2 My Content folders...\n");
    const CZoltaFilePath path = GetMyContentManifestPath();
    std::shared_ptr<CGalleryManifest> manifest = g_myContent ? g_myContent : OpenGallery(path.GetPath());
    CGalleryFolder* root = manifest ? RootCategory(*manifest) : nullptr;
    if (!root)
        return;
    std::vector<OldItem> items;
    CollectOldItems(m_oldMyContent, items);
    bool imported = false;
    for (const OldItem& item : items) {
        // Copied beside the manifest once: an item already there was imported by an earlier start.
        const CZoltaFilePath copy = path.GetFolder().GetFile(item.file.GetName());
        if (IsCancelled() || !item.file.Exists() || copy.Exists() || !item.file.CopyTo(copy, true))
            continue;
        CGalleryActivity* activity = nullptr;
        HRESULT result = CGalleryActivity::Create(&activity);
        if (SUCCEEDED(result))
            result = activity->SetHref(copy.GetName());
        if (SUCCEEDED(result))
            result = activity->m_metadata->SetIdentifier(NewActivityIdentifier().GetString());
        if (SUCCEEDED(result))
            result = activity->m_metadata->m_titles->Add(L"en", item.title);
        if (SUCCEEDED(result))
            result = root->AddActivity(activity);
        if (FAILED(result)) {
            if (activity)
                CGalleryActivity::Destroy(activity);
            copy.Remove();  // so that a later start imports the item again
            break;
        }
        imported = true;
    }
    if (imported)  // like a failed gallery, a failed save does not stop start-up
        static_cast<void>(CGalleryManifestIO::Save(*manifest, path.GetPath().GetString(), !g_noCache));
}

std::shared_ptr<CGalleryManifest> CGalleryInitializeThread::OpenGallery(const CAtlString& path)
{
    return OpenGalleryManifest(path, *this, this);
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
