#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "configuration/CApplicationData.h"
#include "configuration/CAutoDirectoryDestructor.h"
#include "configuration/CGalleryData.h"
#include "configuration/CGalleryRepositoryEntry.h"
#include "configuration/COrganizationData.h"
#include "configuration/CVersionString.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"
#include "configuration/FileList.h"
#include "configuration/MetaDataXml.h"

#include <functional>
#include <memory>
#include <vector>

// The parsed description of one gallery collection, in whichever of its three forms it came:
// a directory with configuration.xml and metadata.xml, a .gallerycollection archive of such a
// directory, or the stored copy found again through the gallery's repository entry.
// All operations report by their result; the caller chooses the words for the user.
class CConfiguration {
public:
    typedef std::function<void(CConfiguration const*)> LoadedCallback;

    CConfiguration();
    ~CConfiguration();
    CConfiguration(const CConfiguration&) = delete;
    CConfiguration& operator=(const CConfiguration&) = delete;

    // Called at the end of every successful load.
    void SetLoadedCallback(LoadedCallback callback);

    // The three roads in. Each returns whether the configuration is now loaded.
    [[nodiscard]] bool OpenCollectionDirectory(const CAtlString& directory);
    bool OpenCollectionFile(const CAtlString& file);
    bool OpenInstalled(const CAtlString& guid);

    // One document each; both also enter the document in the file list.
    [[nodiscard]] bool ReadConfigurationXml(const CAtlString& file);
    [[nodiscard]] bool ReadMetaDataXml(const CAtlString& file);
    // The form written next to the stored copy: a subset of what is read, file references
    // reduced to their bare names.
    [[nodiscard]] bool WriteConfigurationXml(const CAtlString& file) const;

    // Back to the empty state: documents, file list, temporary folders and repository entry go.
    void Reset();

    bool IsLoaded() const;  // the last load succeeded
    bool IsStored() const;  // the documents in use are the stored copy

    // Folder the documents were read from; relative references resolve against it.
    CZoltaDirectoryPath GetDirectory() const;
    CZoltaDirectoryPath GetSourceDirectory() const;
    // Where the configuration is kept for good, below the configurations folder.
    CZoltaDirectoryPath GetConfigurationDirectory() const;
    // A reference from the documents as a full path; empty for an empty reference or one that
    // would leave the collection's folder.
    CAtlString ResolvePath(const CAtlString& relative) const;
    // The resolved style sheet of the application record; empty when there is none.
    CAtlString GetStyleSheetPath() const;

    CZoltaDirectoryPath GetInstallDirectory() const;
    void SetInstallDirectory(const CZoltaDirectoryPath& directory);
    CAtlString GetApplicationPath() const;
    void SetApplicationPath(const CAtlString& path);
    // Folder holding the .gallerycollection file that was opened; empty otherwise.
    CAtlString GetCollectionLocation() const;
    const CVersionString& GetDocumentVersion() const;

    // Never null: a reset makes fresh ones.
    std::shared_ptr<FileList> GetFileList() const;
    std::shared_ptr<CApplicationData> GetApplication() const;
    std::shared_ptr<COrganizationData> GetOrganization() const;
    std::shared_ptr<CGalleryData> GetGallery() const;
    std::shared_ptr<MetaDataXml> GetMetaData() const;
    const CGalleryRepositoryEntry& GetRepositoryEntry() const;

    CZoltaDirectoryPath DefaultInstallDirectory() const;
    bool FindInstalled();
    bool ComposeRepositoryEntry();
    bool Register();
    bool Unregister();
    [[nodiscard]] bool StoreConfiguration();
    bool RemoveStoredFiles();

    // "/usr/local/share/ZOLTA Scrivent Galleries" and its "Configurations" folder, both mapped
    // through the system root.
    static CZoltaDirectoryPath SharedGalleriesFolder();
    static CZoltaDirectoryPath ConfigurationsFolder();
    // Every gallery entry of the group "TeamContent" in the settings store.
    static std::vector<CGalleryRepositoryEntry> InstalledGalleries();

    // Version of configuration.xml this program understands; newer documents are refused.
    static const wchar_t* const SupportedVersion;

private:
    [[nodiscard]] bool UnpackCollection(const CZoltaFilePath& archive, CZoltaDirectoryPath& unpacked);
    void ComputeConfigurationDirectory();
    [[nodiscard]] bool CopyListedFiles() const;
    [[nodiscard]] bool CopyListedDirectories() const;

    LoadedCallback m_loadedCallback;
    std::vector<std::shared_ptr<CAutoDirectoryDestructor>> m_temporaryDirectories;
    CVersionString m_documentVersion;
    bool m_valid = false;
    CZoltaDirectoryPath m_sourceDirectory;
    CZoltaDirectoryPath m_configurationDirectory;
    bool m_stored = false;
    CAtlString m_applicationPath;
    CZoltaDirectoryPath m_installDirectory;
    CAtlString m_collectionLocation;
    std::shared_ptr<FileList> m_files;
    std::shared_ptr<CApplicationData> m_application;
    std::shared_ptr<COrganizationData> m_organization;
    std::shared_ptr<CGalleryData> m_gallery;
    std::shared_ptr<MetaDataXml> m_metaData;
    CGalleryRepositoryEntry m_repositoryEntry;
};
