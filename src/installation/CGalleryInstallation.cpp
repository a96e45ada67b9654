#include "installation/CGalleryInstallation.h"

#include "gallery/CGalleryInstalledManifest.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryManifestIO.h"
#include "network/FetchUrl.h"
#include "foundation/SafeReplace.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <tinyxml2.h>

#include <atomic>
#include <cerrno>
#include <cstring>

const wchar_t* const CGalleryInstallation::GalleryCategoriesXml = L"gallery_categories.xml";
const wchar_t* const CGalleryInstallation::LockFileName = L".curatool.lock";

namespace {

std::atomic<bool> g_connectionAvailable{true};

const wchar_t kDataFolderName[] = L"Gallery Data Files";
const wchar_t kDefaultEndpoint[] = L"http://downloads.zoltaworks.invalid/software/ZPC";

const CAtlString& ProgramDirectory()
{
    static const CAtlString directory = [] {
        const QString target = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
        return CAtlString(QFileInfo(target).absolutePath());
    }();
    return directory;
}

}  // namespace

std::unique_ptr<CGalleryInstallation> CGalleryInstallation::Create()
{
    std::unique_ptr<CGalleryInstallation> installation(new CGalleryInstallation());
    installation->m_temporaryDirectory = GetTempFolder().GetUniqueChild(L"gallery");
    if (!installation->m_temporaryDirectory.Create())
        return nullptr;
    installation->m_downloadDirectory = installation->m_temporaryDirectory;
    return installation;
}

CGalleryInstallation::~CGalleryInstallation()
{
    m_categories.clear();
    if (!m_temporaryDirectory.IsEmpty())
        m_temporaryDirectory.Remove();
    if (m_manifest) {
        CGalleryManifestIO::Close(*m_manifest);
        CGalleryManifest::Destroy(m_manifest);
    }
}

void CGalleryInstallation::SetDownloadOnly(const CZoltaDirectoryPath& directory)
{
    m_downloadOnly = true;
    m_downloadDirectory = directory;
}

CGalleryCategory* CGalleryInstallation::Category(int index) const
{
    if (index < 0 || index >= CategoryCount())
        return nullptr;
    return m_categories[static_cast<std::size_t>(index)].get();
}

CGalleryCategory* CGalleryInstallation::CategoryById(const wchar_t* id) const
{
    for (const auto& category : m_categories)
        if (CompareVersionText(category->GetId(), id) == 0)
            return category.get();
    return nullptr;
}

void CGalleryInstallation::ClearResults()
{
    for (const auto& category : m_categories) {
        category->SetResult(S_FALSE);
        category->SetFinished(false);
    }
}

void CGalleryInstallation::SetConnectionAvailable(bool available)
{
    g_connectionAvailable = available;
}

bool CGalleryInstallation::IsConnectionAvailable()
{
    return g_connectionAvailable;
}

CAtlString CGalleryInstallation::DefaultSource(int kind)
{
    const CAtlString local = ProgramDirectory() + L"/" + kDataFolderName;
    switch (kind) {
    case 3:
        return CAtlString(kDataFolderName);
    case 1:
        return local;
    case 2:
        return CAtlString(kDefaultEndpoint);
    default:
        if (CZoltaDirectoryPath(local).GetFile(GalleryCategoriesXml).Exists())
            return local;
        return CAtlString(kDefaultEndpoint);
    }
}

bool CGalleryInstallation::IsUrl(const wchar_t* source)
{
    if (!source)
        return true;
    const wchar_t* p = source;
    while ((*p >= L'0' && *p <= L'9') || (*p >= L'a' && *p <= L'z') || (*p >= L'A' && *p <= L'Z') || *p == L'+' ||
           *p == L'-' || *p == L'.')
        ++p;
    return p[0] == L':' && p[1] == L'/' && p[2] == L'/';
}

CAtlString CGalleryInstallation::EncodeUrlName(const CAtlString& name)
{
    static const char kSafe[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-_.!~*'():/";
    static const char kHex[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    const CAtlStringA utf8 = name.ToUtf8();
    CAtlString encoded;
    for (int i = 0; i < utf8.GetLength(); ++i) {
        const unsigned char byte = static_cast<unsigned char>(utf8[i]);
        if (byte == '\\')
            encoded += L'/';
        else if (byte != 0 && std::strchr(kSafe, byte))
            encoded += static_cast<wchar_t>(byte);
        else {
            encoded += L'%';
            encoded += static_cast<wchar_t>(kHex[byte >> 4]);
            encoded += static_cast<wchar_t>(kHex[byte & 15]);
        }
    }
    return encoded;
}

bool CGalleryInstallation::IsHostileName(const CAtlString& name)
{
    if (name.IsEmpty() || name[0] == L'/' || name[0] == L'\\' || (name.GetLength() > 1 && name[1] == L':'))
        return true;
    int start = 0;
    const int length = name.GetLength();
    for (int i = 0; i <= length; ++i) {
        // Control characters (C0, DEL, C1) would reach terminals and file names as they are.
        if (i < length && (name[i] < 0x20 || (name[i] >= 0x7F && name[i] <= 0x9F)))
            return true;
        if (i == length || name[i] == L'/' || name[i] == L'\\') {
            if (i - start == 2 && name[start] == L'.' && name[start + 1] == L'.')
                return true;
            start = i + 1;
        }
    }
    return false;
}

void CGalleryInstallation::Report(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item,
                                  int percent, int overall)
{
    if (stage == eGalleryInstallationProgressFailed) {
        if (!m_failureReason.IsEmpty())
            m_observer.FailureReason(category, item, m_failureReason);
        m_failureReason.Empty();
    } else if (percent == 0)
        m_failureReason.Empty();  // a new item begins: an earlier, forgiven reason is not its own
    m_observer.Progress(stage, category, item, percent, overall);
}

void CGalleryInstallation::NoteFailureReason(const CAtlString& reason)
{
    if (m_failureReason.IsEmpty())
        m_failureReason = reason;
}

CZoltaDirectoryPath CGalleryInstallation::UninstallFolder() const
{
    CZoltaDirectoryPath folder = m_installDirectory;
    folder.Append(L"Uninstall");
    return folder;
}

HRESULT CGalleryInstallation::Locate(const CAtlString& name, CGalleryCategory* category, int overall,
                                     CZoltaFilePath& path, bool& temporary)
{
    temporary = false;
    if (m_source.IsEmpty() || name.IsEmpty() || m_downloadDirectory.IsEmpty())
        return E_INVALIDARG;
    // Names come from the source's document: none may reach outside the folder it is joined to.
    if (IsHostileName(name)) {
        NoteFailureReason(L"The source names it with control characters or a path outside its folder");
        return E_INVALIDARG;
    }
    if (!IsUrl(m_source)) {
        path = CZoltaDirectoryPath(m_source).GetFile(name);
        return S_OK;
    }
    const CAtlString url = m_source + L"/" + EncodeUrlName(name);
    path = m_downloadDirectory.GetFile(name);
    path.GetFolder().Create();
    Report(eGalleryInstallationProgressDownloading, category, name, 0, overall);
    CAtlString reason;
    const HRESULT hr = FetchUrl(url, path, m_observer.GetProxyObserver(), &m_observer, &reason);
    if (FAILED(hr))
        NoteFailureReason(reason + L" (" + url + L")");
    Report(eGalleryInstallationProgressDownloading, category, name, 100, overall);
    temporary = SUCCEEDED(hr);
    return hr;
}

HRESULT CGalleryInstallation::Open(const CZoltaDirectoryPath& installDirectory, const CAtlString& source, bool refresh)
{
    if (m_manifest)
        return E_FAIL;
    // Without a folder every path below would hang off the root of the file system.
    if (installDirectory.IsEmpty())
        return E_INVALIDARG;
    m_installDirectory = installDirectory;
    // One run at a time per gallery, whichever copy of the program runs it.
    if (!UninstallFolder().Create() || !m_galleryLock.TryLock(UninstallFolder().GetFile(LockFileName))) {
        m_problem = CAtlString(L"Another run is changing the gallery in ") + installDirectory.GetPath() +
                    L"; try again when it has finished.";
        return E_GALLERY_BUSY;
    }
    RemoveTemporaryManifests();
    HRESULT hr = CGalleryManifest::Create(&m_manifest);
    if (FAILED(hr))
        return hr;
    hr = CGalleryManifestIO::Open(*m_manifest, installDirectory.GetFile(L"imsmanifest.xml").GetPath(), nullptr, false);
    if (FAILED(hr)) {
        m_problem = CAtlString(L"Could not read the gallery's manifest ") +
                    installDirectory.GetFile(L"imsmanifest.xml").GetPath();
        return hr;
    }
    // A run killed half-way is completed first, so that what counts as installed is true.
    RunJournal::Recover(UninstallFolder(), *m_manifest);
    // Only after the journal has read what a killed run left beside its records.
    for (const CZoltaDirectoryPath& folder : {m_installDirectory, UninstallFolder()})
        RemoveStaleReplacements(folder);
    m_source = source;
    m_categoriesDocument = UninstallFolder().GetFile(GalleryCategoriesXml);
    if (refresh || !m_categoriesDocument.Exists()) {
        CZoltaFilePath located;
        bool temporary = false;
        HRESULT located_hr = Locate(GalleryCategoriesXml, nullptr, 0, located, temporary);
        // A document that doesn't parse (a cut transfer) never takes the place of a good copy.
        if (SUCCEEDED(located_hr))
            located_hr = CheckCategoriesDocument(located);
        // The stored copy is replaced whole or not at all; a run without it goes no further.
        if (SUCCEEDED(located_hr) && !ReplaceFileFrom(m_categoriesDocument, located)) {
            m_problem = CAtlString(L"Could not write ") + m_categoriesDocument.GetPath() + L" (" +
                        CAtlString(QString::fromLocal8Bit(std::strerror(errno))) + L")";
            if (temporary)
                located.Remove();
            return E_FAIL;
        }
        if (temporary && !located.IsSameFile(m_categoriesDocument))
            located.Remove();
        if (!m_categoriesDocument.Exists() && FAILED(located_hr) && !m_removeAllRecords) {
            if (m_problem.IsEmpty())
                m_problem = CAtlString(L"Could not read the list of categories of the source ") + source;
            Report(eGalleryInstallationProgressFailed, nullptr, GalleryCategoriesXml, 100, 0);
            return located_hr;
        }
    }
    hr = ReadCategoriesDocument();
    if (FAILED(hr) && m_removeAllRecords) {
        // Removing every record needs no list of categories.
        m_categories.clear();
        m_problem.Empty();
        return S_OK;
    }
    if (FAILED(hr) && m_problem.IsEmpty())
        m_problem = CAtlString(L"Could not read the list of categories ") + m_categoriesDocument.GetPath();
    return hr;
}

void CGalleryInstallation::RemoveTemporaryManifests() const
{
    // Temporary manifests of older runs are only ever the program's own, and nothing else runs
    // on this gallery now.
    for (const CZoltaDirectoryPath& folder : {m_installDirectory, UninstallFolder()}) {
        std::vector<CZoltaFilePath> files;
        folder.ListFiles(L"imsmanifest_temp*.xml", files);
        for (const CZoltaFilePath& file : files)
            file.Remove();
    }
}

HRESULT CGalleryInstallation::CheckCategoriesDocument(const CZoltaFilePath& path)
{
    QFile file(path.ToQString());
    if (!file.open(QIODevice::ReadOnly))
        return E_INVALIDARG;
    const QByteArray bytes = file.readAll();
    tinyxml2::XMLDocument document(true, tinyxml2::PRESERVE_WHITESPACE);
    if (document.Parse(bytes.constData(), static_cast<size_t>(bytes.size())) != tinyxml2::XML_SUCCESS) {
        const CAtlString where = IsUrl(m_source) ? m_source + L"/" + GalleryCategoriesXml : path.GetPath();
        NoteFailureReason(L"Cannot parse " + where + L": " + CAtlString(document.ErrorStr()));
        return E_INVALIDARG;
    }
    const tinyxml2::XMLElement* root = document.RootElement();
    return root && root->FirstChildElement("categories") ? S_OK : E_FAIL;
}

void CGalleryInstallation::LoadInstalledRecords(CGalleryInstalledRecords& records) const
{
    std::vector<CZoltaFilePath> files;
    UninstallFolder().ListFiles(L"imsmanifest*.xml", files);
    for (const CZoltaFilePath& file : files) {
        auto record = std::make_shared<CGalleryInstalledManifest>();
        if (SUCCEEDED(record->Load(file.GetPath())))
            records[record->GetId()] = record;
    }
}

HRESULT CGalleryInstallation::ReadCategoriesDocument()
{
    Report(eGalleryInstallationProgressReading, nullptr, GalleryCategoriesXml, 0, 0);
    m_cancel = false;
    m_categories.clear();
    m_removals.clear();
    CGalleryInstalledRecords records;
    LoadInstalledRecords(records);

    QFile file(m_categoriesDocument.ToQString());
    if (!file.open(QIODevice::ReadOnly))
        return E_INVALIDARG;
    const QByteArray bytes = file.readAll();
    tinyxml2::XMLDocument document(true, tinyxml2::PRESERVE_WHITESPACE);
    if (document.Parse(bytes.constData(), static_cast<size_t>(bytes.size())) != tinyxml2::XML_SUCCESS) {
        const CAtlString where =
            IsUrl(m_source) ? m_source + L"/" + GalleryCategoriesXml : m_categoriesDocument.GetPath();
        NoteFailureReason(L"Cannot parse " + where + L": " + CAtlString(document.ErrorStr()));
        Report(eGalleryInstallationProgressFailed, nullptr, GalleryCategoriesXml, 100, 0);
        return E_INVALIDARG;
    }
    const tinyxml2::XMLElement* root = document.RootElement();
    const tinyxml2::XMLElement* categories = root ? root->FirstChildElement("categories") : nullptr;
    if (!categories)
        return E_FAIL;
    for (const tinyxml2::XMLElement* element = categories->FirstChildElement(); element;
         element = element->NextSiblingElement())
    {
        m_categories.push_back(std::make_unique<CGalleryCategory>());
        const HRESULT hr = m_categories.back()->Read(*element, records);
        if (FAILED(hr))
            return hr;
    }
    if (const tinyxml2::XMLElement* mandatory = root->FirstChildElement("mandatory"))
        if (const tinyxml2::XMLElement* removals = mandatory->FirstChildElement("removals"))
            for (const tinyxml2::XMLElement* entry = removals->FirstChildElement(); entry;
                 entry = entry->NextSiblingElement())
                if (const char* id = entry->Attribute("id"))
                    m_removals.push_back(CAtlString::FromUtf8(id));
    Report(eGalleryInstallationProgressReading, nullptr, GalleryCategoriesXml, 100, 100);
    return S_OK;
}
