#include "installation/CInstallationController.h"

#include "configuration/CConfiguration.h"
#include "installation/CGalleryInstallation.h"
#include "network/FetchUrl.h"
#include "installation/IInstallationObserver.h"
#include "foundation/QThreadWithLoop.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <tinyxml2.h>

#include <algorithm>
#include <cwchar>
#include <map>

namespace {

const wchar_t kDataFolderName[] = L"Gallery Data Files";

bool IsOk(HRESULT hr)
{
    return hr >= 0;
}

}  // namespace

CInstallationController::CInstallationController(std::shared_ptr<CConfiguration> configuration,
                                                 IProxyObserver* proxyObserver)
    : m_proxyObserver(proxyObserver),
      m_configuration(std::move(configuration))
{}

CInstallationController::~CInstallationController()
{
    Close();
}

void CInstallationController::Close()
{
    m_installation.reset();
}

void CInstallationController::Notify(eEvent event)
{
    CGalleryInstallation* installation = m_installation.get();
    for (IInstallationObserver* observer : m_observers) {
        switch (event) {
        case eOpening:
            observer->OnOpening(installation);
            break;
        case eOpened:
            observer->OnOpened(installation);
            break;
        case eOpenFailed:
            observer->OnOpenFailed(installation);
            break;
        case eRunning:
            observer->OnRunning(installation);
            break;
        case eRunComplete:
            observer->OnRunComplete(installation);
            break;
        case eRunCanceled:
            observer->OnRunCanceled(installation);
            break;
        case eRunFailed:
            observer->OnRunFailed(installation);
            break;
        }
    }
}

bool CInstallationController::CheckFreeSpace(CAtlString& problem) const
{
    return !m_installation || m_installation->CheckFreeSpace(problem);
}

namespace {

// The destination's write test ("test….tmp" holding at most "test"), left behind by a run killed
// between its creation and its removal: the program's own, so the folder still counts as empty.
bool IsLeftWriteProbe(const QFileInfo& entry)
{
    const QString name = entry.fileName();
    if (!entry.isFile() || entry.isSymLink() || !name.startsWith(QLatin1String("test")) ||
        !name.endsWith(QLatin1String(".tmp")) || entry.size() > 4)
        return false;
    QFile probe(entry.filePath());
    return probe.open(QIODevice::ReadOnly) && QByteArrayLiteral("test").startsWith(probe.readAll());
}

}  // namespace

bool CInstallationController::CheckDestination(const CZoltaDirectoryPath& destination, CAtlString& problem)
{
    const QDir folder(destination.ToQString());
    if (!folder.exists())
        return true;
    if (QFileInfo(folder.filePath(QStringLiteral("Uninstall"))).isDir() ||
        QFileInfo(folder.filePath(QStringLiteral("imsmanifest.xml"))).isFile())
        return true;
    const QFileInfoList entries =
        folder.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    if (std::all_of(entries.begin(), entries.end(), IsLeftWriteProbe))
        return true;
    problem = CAtlString(L"The destination folder is not empty and holds no gallery: ") + destination.GetPath() +
              L"\nChoose an empty folder, or the folder of an installed gallery.";
    return false;
}

bool CInstallationController::HoldsInstalledGallery(const CZoltaDirectoryPath& destination)
{
    CZoltaDirectoryPath uninstall = destination;
    uninstall.Append(L"Uninstall");
    std::vector<CZoltaFilePath> records;
    uninstall.ListFiles(L"imsmanifest*.xml", records);
    return !records.empty() || destination.GetFile(L"imsmanifest.xml").Exists();
}

bool CInstallationController::HasUpdates() const
{
    if (!m_installation)
        return false;
    for (int i = 0; i < m_installation->CategoryCount(); ++i) {
        const CGalleryCategory* category = m_installation->Category(i);
        if (category->IsInstalled() && category->IsUpdateAvailable())
            return true;
    }
    return false;
}

void CInstallationController::SelectUpdates()
{
    if (!m_installation)
        return;
    for (int i = 0; i < m_installation->CategoryCount(); ++i) {
        CGalleryCategory* category = m_installation->Category(i);
        const bool wanted = !category->IsInstalled() || category->IsUpdateAvailable();
        category->SetAction(wanted ? eGalleryCategoryActionInstall : eGalleryCategoryActionNone);
    }
}

void CInstallationController::ClearSelection()
{
    if (!m_installation)
        return;
    for (int i = 0; i < m_installation->CategoryCount(); ++i)
        m_installation->Category(i)->SetAction(eGalleryCategoryActionNone);
}

bool CInstallationController::NoneInstalled() const
{
    if (!m_installation)
        return true;
    for (int i = 0; i < m_installation->CategoryCount(); ++i)
        if (m_installation->Category(i)->IsInstalled())
            return false;
    return true;
}

bool CInstallationController::HasChanges() const
{
    if (!m_installation)
        return false;
    for (int i = 0; i < m_installation->CategoryCount(); ++i)
        if (m_installation->Category(i)->GetAction() != eGalleryCategoryActionNone)
            return true;
    return false;
}

CZoltaDirectoryPath CInstallationController::GetDestination() const
{
    if (m_installation)
        return m_installation->GetDestination();
    ZOLTA_ASSERT(m_configuration != nullptr);
    return m_configuration->GetInstallDirectory();
}

bool CInstallationController::IsLocalSource() const
{
    return !CGalleryInstallation::IsUrl(m_source);
}

CAtlString CInstallationController::GetGalleryId() const
{
    ZOLTA_ASSERT(m_configuration != nullptr);
    return m_configuration->GetGallery()->GetGUID();
}

CAtlString CInstallationController::GetGalleryUrl() const
{
    ZOLTA_ASSERT(m_configuration != nullptr);
    return m_configuration->GetGallery()->GetDefaultSource();
}

CAtlString CInstallationController::GetGalleryFolder() const
{
    ZOLTA_ASSERT(m_configuration != nullptr);
    return m_configuration->GetGallery()->GetName();
}

bool CInstallationController::HasLocalGalleryData() const
{
    return CZoltaDirectoryPath(CGalleryInstallation::DefaultSource(1))
        .GetFile(CGalleryInstallation::GalleryCategoriesXml)
        .Exists();
}

bool CInstallationController::HasInstalledData() const
{
    CZoltaDirectoryPath uninstall = GetDestination();
    uninstall.Append(L"Uninstall");
    return uninstall.GetFile(CGalleryInstallation::GalleryCategoriesXml).Exists();
}

CZoltaDirectoryPath CInstallationController::LocateGalleryData(const CZoltaDirectoryPath& directory,
                                                               const CAtlString& folderName)
{
    if (directory.IsEmpty())
        return CZoltaDirectoryPath();
    if (directory.GetFile(CGalleryInstallation::GalleryCategoriesXml).Exists())
        return directory;
    CZoltaDirectoryPath data = directory;
    data.Append(kDataFolderName);
    if (data.GetFile(CGalleryInstallation::GalleryCategoriesXml).Exists())
        return data;
    if (folderName.IsEmpty())
        return CZoltaDirectoryPath();
    std::vector<CZoltaDirectoryPath> entries;
    directory.ListFolders(L"*", entries);
    for (const CZoltaDirectoryPath& entry : entries) {
        if (entry.GetName().CompareNoCase(folderName) != 0)
            continue;
        CZoltaDirectoryPath candidate = entry;
        candidate.Append(kDataFolderName);
        if (candidate.GetFile(CGalleryInstallation::GalleryCategoriesXml).Exists())
            return candidate;
        break;
    }
    return CZoltaDirectoryPath();
}

CAtlString CInstallationController::GalleryIdFromCategoryId(const CAtlString& categoryId)
{
    if (categoryId.IsEmpty())
        return CAtlString();
    if (categoryId[0] == L'{') {
        const int end = categoryId.Find(L'}');
        return end > 0 ? categoryId.Left(end + 1) : CAtlString();
    }
    const int dot = categoryId.ReverseFind(L'.');
    return dot > 0 ? categoryId.Left(dot) : CAtlString();
}

bool CInstallationController::BelongsToGallery(const CZoltaFilePath& document) const
{
    QFile file(document.ToQString());
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    tinyxml2::XMLDocument xml(true, tinyxml2::PRESERVE_WHITESPACE);
    if (xml.Parse(bytes.constData(), static_cast<size_t>(bytes.size())) != tinyxml2::XML_SUCCESS)
        return false;
    const tinyxml2::XMLElement* root = xml.RootElement();
    const tinyxml2::XMLElement* categories = root ? root->FirstChildElement("categories") : nullptr;
    if (!categories && root && std::string(root->Name()) == "categories")
        categories = root;
    if (!categories)
        return false;
    const char* id = categories->Attribute("id");
    if (id && *id)
        return CAtlString::FromUtf8(id) == GetGalleryId();
    const tinyxml2::XMLElement* first = categories->FirstChildElement("category");
    const char* categoryId = first ? first->Attribute("id") : nullptr;
    if (!categoryId)
        return false;
    const CAtlString galleryId = GalleryIdFromCategoryId(CAtlString::FromUtf8(categoryId));
    return !galleryId.IsEmpty() && galleryId == GetGalleryId();
}

bool CInstallationController::FindSource(const CAtlString& path)
{
    const CZoltaDirectoryPath data = LocateGalleryData(CZoltaDirectoryPath(path), GetGalleryFolder());
    if (!data.IsEmpty() && BelongsToGallery(data.GetFile(CGalleryInstallation::GalleryCategoriesXml))) {
        m_source = data.GetPath();
        return true;
    }
    m_source = GetGalleryUrl();
    return false;
}

bool CInstallationController::TestUrl(const CAtlString& url, CAtlString* reason)
{
    if (!CGalleryInstallation::IsUrl(url)) {
        if (reason)
            *reason = L"Not an address";
        return false;
    }
    const CZoltaFilePath temporary = MakeTempFile(L".xml", L"SCVTemp");
    CAtlString location = url;
    if (!location.IsEmpty() && location[location.GetLength() - 1] == L'/')
        location.Truncate(location.GetLength() - 1);
    location += L"/";
    location += CGalleryInstallation::GalleryCategoriesXml;
    CGalleryInstallationMetaObserver observer;
    observer.SetProxyObserver(m_proxyObserver);
    const HRESULT hr = FetchUrl(location, temporary, m_proxyObserver, &observer, reason);
    temporary.Remove();
    return hr == S_OK;
}

void CInstallationController::SetConnectionAvailable(bool available)
{
    CGalleryInstallation::SetConnectionAvailable(available);
}

bool CInstallationController::Open(IGalleryInstallationObserver* observer)
{
    Notify(eOpening);
    Close();
    return OpenInstallation(GetDestination(), m_source, observer, false);
}

bool CInstallationController::OpenInstallation(const CZoltaDirectoryPath& destination, const CAtlString& source,
                                               IGalleryInstallationObserver* observer, bool downloadOnly)
{
    m_installation = CGalleryInstallation::Create();
    if (!m_installation) {
        Notify(eOpenFailed);
        return false;
    }
    m_installation->SetProxyObserver(m_proxyObserver);
    m_installation->SetObserver(observer);
    if (downloadOnly)
        m_installation->SetDownloadOnly(destination);
    m_installation->SetRemoveAllRecords(m_openForRemoval);
    CGalleryInstallation* installation = m_installation.get();
    // The strings cross to the worker as copies of their own: reference counts aren't atomic.
    const CAtlString sourceCopy(source.GetString());
    const CZoltaDirectoryPath destinationCopy(CAtlString(destination.GetPath().GetString()));
    const HRESULT hr = QThreadWithLoop::RunOnThread(
        [installation, destinationCopy, sourceCopy] { return installation->Open(destinationCopy, sourceCopy, true); },
        QThread::InheritPriority);
    m_problem = IsOk(hr) ? CAtlString() : CAtlString(m_installation->GetProblem().GetString());
    Notify(IsOk(hr) ? eOpened : eOpenFailed);
    return IsOk(hr);
}

bool CInstallationController::Run(IGalleryInstallationObserver* observer)
{
    if (!m_installation)
        return false;
    m_installation->SetObserver(observer);
    CGalleryInstallation* installation = m_installation.get();
    const HRESULT hr =
        QThreadWithLoop::RunOnThread([installation] { return installation->Run(); }, QThread::InheritPriority);
    if (hr < 0) {
        if (hr == E_ABORT) {
            Notify(eRunCanceled);
            return true;
        }
        Notify(eRunFailed);
        return false;
    }
    Notify(eRunComplete);
    return true;
}

bool CInstallationController::RunSelection(IGalleryInstallationObserver* observer)
{
    Notify(eRunning);
    if (m_installation)
        m_installation->ClearResults();
    return Run(observer);
}

void CInstallationController::ApplyUpdatesOnly(IGalleryInstallationObserver* observer)
{
    if (!HasUpdates())
        return;
    Notify(eRunning);
    m_installation->SetObserver(observer);
    m_installation->ClearResults();
    std::map<CAtlString, int> chosen;
    for (int i = 0; i < m_installation->CategoryCount(); ++i) {
        CGalleryCategory* category = m_installation->Category(i);
        chosen[category->GetId()] = category->GetAction();
        const bool update = category->IsInstalled() && category->IsUpdateAvailable();
        category->SetAction(update ? eGalleryCategoryActionUpdate : eGalleryCategoryActionNone);
    }
    static_cast<void>(Run(observer));  // the outcome reaches the observers as their events
    for (int i = 0; i < m_installation->CategoryCount(); ++i) {
        CGalleryCategory* category = m_installation->Category(i);
        const auto action = chosen.find(category->GetId());
        if (action != chosen.end())
            category->SetAction(action->second);
    }
}

void CInstallationController::SelectIds(const std::vector<CAtlString>& ids)
{
    for (const CAtlString& id : ids)
        for (int i = 0; i < m_installation->CategoryCount(); ++i)
            if (std::wcscmp(m_installation->Category(i)->GetId(), id) == 0)
                m_installation->Category(i)->SetAction(eGalleryCategoryActionInstall);
}

bool CInstallationController::RunBatch(bool downloadOnly, const std::vector<CAtlString>* ids,
                                       IGalleryInstallationObserver* observer)
{
    if (!OpenInstallation(GetDestination(), m_source, observer, downloadOnly)) {
        Close();
        return false;
    }
    if (ids)
        SelectIds(*ids);
    else
        SelectUpdates();
    if (!CheckFreeSpace(m_problem)) {
        Close();
        return false;
    }
    const bool result = Run(observer);
    Close();
    return result;
}

bool CInstallationController::InstallAll(IGalleryInstallationObserver* observer)
{
    return RunBatch(false, nullptr, observer);
}

bool CInstallationController::InstallSome(const std::vector<CAtlString>& ids, IGalleryInstallationObserver* observer)
{
    return RunBatch(false, &ids, observer);
}

bool CInstallationController::DownloadAll(IGalleryInstallationObserver* observer)
{
    return RunBatch(true, nullptr, observer);
}

bool CInstallationController::DownloadSome(const std::vector<CAtlString>& ids, IGalleryInstallationObserver* observer)
{
    return RunBatch(true, &ids, observer);
}

CZoltaDirectoryPath CInstallationController::UninstallAll(IGalleryInstallationObserver* observer)
{
    m_openForRemoval = true;
    const bool opened = OpenInstallation(GetDestination(), CAtlString(), observer, false);
    m_openForRemoval = false;
    if (opened) {
        for (int i = 0; i < m_installation->CategoryCount(); ++i) {
            CGalleryCategory* category = m_installation->Category(i);
            category->SetAction(category->IsInstalled() ? eGalleryCategoryActionUninstall : eGalleryCategoryActionNone);
        }
        static_cast<void>(Run(observer));  // the caller goes on whatever the run returned
    }
    Close();
    return GetDestination();
}
