#include "configuration/CConfiguration.h"

#include "foundation/SafeReplace.h"

#include "configuration/CollectionFolders.h"
#include "foundation/SystemLocation.h"
#include "ziparchive/ZipHelpers.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <tinyxml2.h>

#include <QFile>

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

const wchar_t* const CConfiguration::SupportedVersion = L"1.0.0.0";

namespace {

const char* const SharedGalleriesLocation = "/usr/local/share/ZOLTA Scrivent Galleries";
const wchar_t* const ConfigurationsFolderName = L"Configurations";
const wchar_t* const ConfigurationFileName = L"configuration.xml";
const wchar_t* const MetaDataFileName = L"metadata.xml";
const wchar_t* const ManifestFileName = L"imsmanifest.xml";
const wchar_t* const CollectionExtension = L".gallerycollection";
const wchar_t* const TempFilesOwner = L"CuratoolId";
const wchar_t* const TempFolderBase = L"Configuration";

// A single path component that stays where it is put: not empty, not "." or "..".
bool IsPlainName(const CAtlString& name)
{
    return !name.IsEmpty() && name != L"." && name != L"..";
}

}  // namespace

CConfiguration::CConfiguration()
{
    Reset();
}

CConfiguration::~CConfiguration() = default;

void CConfiguration::SetLoadedCallback(LoadedCallback callback)
{
    m_loadedCallback = std::move(callback);
}

void CConfiguration::Reset()
{
    m_temporaryDirectories.clear();
    m_documentVersion = CVersionString();
    m_valid = false;
    m_sourceDirectory = CZoltaDirectoryPath();
    m_configurationDirectory = CZoltaDirectoryPath();
    m_stored = false;
    m_installDirectory = CZoltaDirectoryPath();
    m_collectionLocation.Empty();
    m_files = std::make_shared<FileList>();
    m_application = std::make_shared<CApplicationData>(m_files);
    m_organization = std::make_shared<COrganizationData>(m_files);
    m_gallery = std::make_shared<CGalleryData>();
    m_metaData = std::make_shared<MetaDataXml>(m_files);
    m_repositoryEntry.Clear();
}

bool CConfiguration::OpenCollectionDirectory(const CAtlString& directory)
{
    const CZoltaDirectoryPath folder(directory);
    m_sourceDirectory = folder;
    m_files->SetBaseDirectory(folder);
    if (directory.IsEmpty() || !folder.Exists()) {
        m_valid = false;
        return false;
    }
    m_valid = ReadConfigurationXml(folder.GetFile(ConfigurationFileName).GetPath());
    // The metadata is read even after a failure, so that the file list is complete.
    const bool metaDataRead = ReadMetaDataXml(folder.GetFile(MetaDataFileName).GetPath());
    m_valid = m_valid && metaDataRead;
    ComputeConfigurationDirectory();
    if (m_valid && m_loadedCallback)
        m_loadedCallback(this);
    return m_valid;
}

bool CConfiguration::ReadConfigurationXml(const CAtlString& file)
{
    const CZoltaFilePath path(file);
    m_files->AddFile(path);
    QFile input(path.ToQString());
    if (!path.Exists() || !input.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = input.readAll();

    tinyxml2::XMLDocument document(true, tinyxml2::COLLAPSE_WHITESPACE);
    if (document.Parse(bytes.constData(), static_cast<std::size_t>(bytes.size())) != tinyxml2::XML_SUCCESS)
        return false;
    const tinyxml2::XMLElement* root = document.RootElement();
    if (!root)
        return false;

    m_documentVersion = CAtlString::FromUtf8(root->Attribute("Version"));
    if (CVersionString(CAtlString(SupportedVersion)) < m_documentVersion)
        return false;

    const tinyxml2::XMLElement* gallery = root->FirstChildElement("Gallery");
    if (!gallery)
        return false;
    m_gallery->Read(*gallery);
    const tinyxml2::XMLElement* application = root->FirstChildElement("Application");
    if (!application)
        return false;
    m_application->Read(*application);
    const tinyxml2::XMLElement* organization = root->FirstChildElement("Organization");
    if (!organization)
        return false;
    m_organization->Read(*organization);
    return true;
}

bool CConfiguration::ReadMetaDataXml(const CAtlString& file)
{
    return m_metaData->Read(file);
}

bool CConfiguration::WriteConfigurationXml(const CAtlString& file) const
{
    tinyxml2::XMLDocument document;
    document.InsertEndChild(document.NewDeclaration("xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\""));
    tinyxml2::XMLElement* root = document.NewElement("CCSettings");
    document.InsertEndChild(root);
    root->SetAttribute("Version", m_documentVersion.GetText().ToUtf8().GetString());

    tinyxml2::XMLElement* application = document.NewElement("Application");
    root->InsertEndChild(application);
    m_application->Write(*application);
    tinyxml2::XMLElement* organization = document.NewElement("Organization");
    root->InsertEndChild(organization);
    m_organization->Write(*organization);
    tinyxml2::XMLElement* gallery = document.NewElement("Gallery");
    root->InsertEndChild(gallery);
    m_gallery->Write(*gallery);

    // A failed write (a full disk) keeps the stored copy that was there.
    return ReplaceFileWith(CZoltaFilePath(file),
                           [&document](FILE* output) { return document.SaveFile(output) == tinyxml2::XML_SUCCESS; });
}

bool CConfiguration::OpenCollectionFile(const CAtlString& file)
{
    // The file may lie inside the collection unpacked before: that goes only when this call ends.
    const auto previousDirectories = std::move(m_temporaryDirectories);
    Reset();
    const CZoltaFilePath archive(file);
    if (!archive.Exists() || archive.GetExtension() != CollectionExtension)
        return false;

    CZoltaDirectoryPath unpacked;
    if (!UnpackCollection(archive, unpacked))
        return false;
    m_temporaryDirectories.push_back(std::make_shared<CAutoDirectoryDestructor>(unpacked));
    m_collectionLocation = archive.GetFolder().GetPath();

    if (OpenCollectionDirectory(unpacked.GetPath()))
        return true;
    // Nothing of a collection that failed to load is worth keeping on disk.
    m_temporaryDirectories.pop_back();
    return false;
}

bool CConfiguration::UnpackCollection(const CZoltaFilePath& archive, CZoltaDirectoryPath& unpacked)
{
    unpacked = GetTempFilesFolder(TempFilesOwner).GetUniqueChild(TempFolderBase);
    if (!unpacked.Create())
        return false;
    if (ZipExtractAll(archive, unpacked))
        return true;
    std::error_code ignored;
    fs::remove_all(fs::path(unpacked.GetPath().ToUtf8().GetString()), ignored);
    return false;
}

bool CConfiguration::OpenInstalled(const CAtlString& guid)
{
    Reset();
    if (!m_repositoryEntry.Read(CGalleryRepositoryEntry::SystemGroup, guid)) {
        m_repositoryEntry.Clear();
        return false;
    }
    m_installDirectory = CZoltaFilePath(m_repositoryEntry.manifestPath).GetFolder();
    if (m_installDirectory.IsEmpty())
        m_installDirectory = DefaultInstallDirectory();
    m_stored = true;
    return OpenCollectionDirectory(CZoltaFilePath(m_repositoryEntry.metadataPath).GetFolder().GetPath());
}

CZoltaDirectoryPath CConfiguration::SharedGalleriesFolder()
{
    return CZoltaDirectoryPath(
        QString::fromStdString(curatool::SystemLocation(std::string_view(SharedGalleriesLocation))));
}

CZoltaDirectoryPath CConfiguration::ConfigurationsFolder()
{
    CZoltaDirectoryPath folder = SharedGalleriesFolder();
    folder.Append(ConfigurationsFolderName);
    return folder;
}

void CConfiguration::ComputeConfigurationDirectory()
{
    // Names go in as single folder names: characters that a file system or a path would read
    // otherwise are deleted, and what would still climb out of the folder is not used.
    CZoltaDirectoryPath directory = ConfigurationsFolder();
    const CAtlString organization = SanitizeFileName(m_organization->GetName());
    const CAtlString gallery = SanitizeFileName(m_gallery->GetName());
    if (!IsPlainName(gallery)) {
        m_configurationDirectory = CZoltaDirectoryPath();
        return;
    }
    if (IsPlainName(organization))
        directory.Append(organization);
    directory.Append(gallery);
    m_configurationDirectory = directory;
}

CZoltaDirectoryPath CConfiguration::DefaultInstallDirectory() const
{
    CZoltaDirectoryPath directory = SharedGalleriesFolder();
    if (!m_application->GetPathOverride().IsEmpty()) {
        directory.Append(m_application->GetPathOverride());
        return directory;
    }
    if (!m_organization->GetName().IsEmpty())
        directory.Append(m_organization->GetName());
    if (!m_gallery->GetName().IsEmpty())
        directory.Append(m_gallery->GetName());
    return directory;
}

bool CConfiguration::FindInstalled()
{
    const bool found = m_repositoryEntry.Read(CGalleryRepositoryEntry::SystemGroup, m_gallery->GetGUID());
    m_installDirectory = CZoltaFilePath(m_repositoryEntry.manifestPath).GetFolder();
    return found;
}

bool CConfiguration::ComposeRepositoryEntry()
{
    m_repositoryEntry.id = m_gallery->GetGUID();
    m_repositoryEntry.group = CGalleryRepositoryEntry::SystemGroup;
    if (m_installDirectory.IsEmpty())
        m_installDirectory = DefaultInstallDirectory();
    m_repositoryEntry.manifestPath = m_installDirectory.GetFile(ManifestFileName).GetPath();
    m_repositoryEntry.applicationPath = m_applicationPath;
    if (m_configurationDirectory.IsEmpty())
        return false;
    m_repositoryEntry.arguments = CAtlString(L"-configuration \"") + m_configurationDirectory.GetPath() + L"\"";
    m_repositoryEntry.metadataPath = m_configurationDirectory.GetFile(MetaDataFileName).GetPath();
    return true;
}

bool CConfiguration::Register()
{
    if (m_repositoryEntry.id.IsEmpty())
        return false;
    ComposeRepositoryEntry();
    return m_repositoryEntry.Write();
}

bool CConfiguration::Unregister()
{
    if (m_repositoryEntry.id.IsEmpty())
        return false;
    return m_repositoryEntry.Remove();
}

bool CConfiguration::StoreConfiguration()
{
    if (m_sourceDirectory.IsEmpty() || m_gallery->GetName().IsEmpty())
        return false;
    if (m_sourceDirectory == m_configurationDirectory) {
        m_stored = true;
        return true;
    }
    if (m_configurationDirectory.IsEmpty() || !m_configurationDirectory.Create())
        return false;
    const bool filesCopied = CopyListedFiles();
    const bool directoriesCopied = CopyListedDirectories();
    return filesCopied && directoriesCopied;
}

bool CConfiguration::CopyListedFiles() const
{
    bool copied = true;
    for (const CZoltaFilePath& file : m_files->GetFiles()) {
        const CAtlString name = file.GetName();
        if (!IsPlainName(name)) {
            copied = false;
            continue;
        }
        const CZoltaFilePath target = m_configurationDirectory.GetFile(name);
        // The same folder spelt another way: copying a file onto itself would empty it.
        if (file.IsSameFile(target))
            continue;
        copied &= file.CopyTo(target);
    }
    return copied;
}

bool CConfiguration::CopyListedDirectories() const
{
    const fs::path destination(m_configurationDirectory.GetPath().ToUtf8().GetString());
    bool copied = true;
    for (const CZoltaDirectoryPath& directory : m_files->GetDirectories()) {
        const CAtlString name = directory.GetName();
        const fs::path source(directory.GetPath().ToUtf8().GetString());
        // A folder that holds the configurations folder would be copied into itself for ever.
        if (!IsPlainName(name) || !directory.Exists() || collection_folders::IsInside(destination / "x", source)) {
            copied = false;
            continue;
        }
        copied &= collection_folders::CopyTree(source, destination / fs::path(name.ToUtf8().GetString()));
    }
    return copied;
}

bool CConfiguration::RemoveStoredFiles()
{
    if (!m_stored)
        return false;
    const fs::path base(m_files->GetBaseDirectory().GetPath().ToUtf8().GetString());
    for (const CZoltaFilePath& file : m_files->GetFiles()) {
        // Only what lies in the collection's own folder is ours to delete.
        if (!m_files->GetBaseDirectory().IsEmpty() &&
            collection_folders::IsInside(fs::path(file.GetPath().ToUtf8().GetString()), base))
            file.Remove();
    }
    // Directories stay, by design: they may hold more than the collection brought.
    return true;
}

bool CConfiguration::IsLoaded() const
{
    return m_valid;
}
bool CConfiguration::IsStored() const
{
    return m_stored;
}
CZoltaDirectoryPath CConfiguration::GetDirectory() const
{
    return m_sourceDirectory;
}
CZoltaDirectoryPath CConfiguration::GetSourceDirectory() const
{
    return m_sourceDirectory;
}
CZoltaDirectoryPath CConfiguration::GetConfigurationDirectory() const
{
    return m_configurationDirectory;
}

CAtlString CConfiguration::ResolvePath(const CAtlString& relative) const
{
    return m_files->Resolve(relative);
}

CAtlString CConfiguration::GetStyleSheetPath() const
{
    return ResolvePath(GetApplication()->GetStyleSheet());
}

CZoltaDirectoryPath CConfiguration::GetInstallDirectory() const
{
    return m_installDirectory;
}
void CConfiguration::SetInstallDirectory(const CZoltaDirectoryPath& directory)
{
    m_installDirectory = directory;
}
CAtlString CConfiguration::GetApplicationPath() const
{
    return m_applicationPath;
}
void CConfiguration::SetApplicationPath(const CAtlString& path)
{
    m_applicationPath = path;
}
CAtlString CConfiguration::GetCollectionLocation() const
{
    return m_collectionLocation;
}
const CVersionString& CConfiguration::GetDocumentVersion() const
{
    return m_documentVersion;
}

std::shared_ptr<FileList> CConfiguration::GetFileList() const
{
    ZOLTA_ASSERT_TEXT(m_files, "px != 0");
    return m_files;
}

std::shared_ptr<CApplicationData> CConfiguration::GetApplication() const
{
    ZOLTA_ASSERT_TEXT(m_application, "px != 0");
    return m_application;
}

std::shared_ptr<COrganizationData> CConfiguration::GetOrganization() const
{
    ZOLTA_ASSERT_TEXT(m_organization, "px != 0");
    return m_organization;
}

std::shared_ptr<CGalleryData> CConfiguration::GetGallery() const
{
    ZOLTA_ASSERT_TEXT(m_gallery, "px != 0");
    return m_gallery;
}

std::shared_ptr<MetaDataXml> CConfiguration::GetMetaData() const
{
    ZOLTA_ASSERT_TEXT(m_metaData, "px != 0");
    return m_metaData;
}

const CGalleryRepositoryEntry& CConfiguration::GetRepositoryEntry() const
{
    return m_repositoryEntry;
}

std::vector<CGalleryRepositoryEntry> CConfiguration::InstalledGalleries()
{
    return CGalleryRepositoryEntry::List(CGalleryRepositoryEntry::SystemGroup);
}
