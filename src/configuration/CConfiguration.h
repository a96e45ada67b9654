#pragma once

#include <functional>
#include <memory>
#include <vector>

class CAtlString;
class CZoltaDirectoryPath;
class CZoltaFilePath;
class CVersionString;
class FileList;
class MetaDataXml;
class CAutoDirectoryDestructor;
class CApplicationData;
class COrganizationData;
class CGalleryData;
class CGalleryRepositoryEntry;

// The parsed description of one gallery collection, in whichever of its three forms it came:
// a directory with configuration.xml and metadata.xml, a .gallerycollection archive of such a
// directory, or the stored copy found again through the gallery's repository entry.
// All operations report by their result; the caller chooses the words for the user.
class CConfiguration
{
public:
    typedef std::function<void(CConfiguration const*)> LoadedCallback;

    CConfiguration();
    ~CConfiguration();
    CConfiguration(const CConfiguration&) = delete;
    CConfiguration& operator=(const CConfiguration&) = delete;

    // Called at the end of every successful load.
    void SetLoadedCallback(LoadedCallback callback);

    // The three roads in. Each returns whether the configuration is now loaded.
    bool OpenCollectionDirectory(const CAtlString& directory);
    bool OpenCollectionFile(const CAtlString& file);
    bool OpenInstalled(const CAtlString& guid);

    // One document each; both also enter the document in the file list.
    bool ReadConfigurationXml(const CAtlString& file);
    bool ReadMetaDataXml(const CAtlString& file);
    // The form written next to the stored copy: a subset of what is read, file references
    // reduced to their bare names.
    bool WriteConfigurationXml(const CAtlString& file) const;

    // Back to the empty state: documents, file list, temporary folders and repository entry go.
    void Reset();

    bool IsLoaded() const;  // the last load succeeded
    bool IsStored() const;  // the documents in use are the stored copy

    // Folder the documents were read from; relative references resolve against it.
    CZoltaDirectoryPath GetDirectory() const;
    CZoltaDirectoryPath GetSourceDirectory() const;
    // Where the configuration is kept for good, below the configurations folder.
    CZoltaDirectoryPath GetConfigurationDirectory() const;
    // A reference from the documents as a full path; empty stays empty.
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
    bool StoreConfiguration();
    bool RemoveStoredFiles();

    // "/usr/local/share/ZOLTA Scrivent Galleries" and its "Configurations" folder, both mapped
    // through the system root.
    static CZoltaDirectoryPath SharedGalleriesFolder();
    static CZoltaDirectoryPath ConfigurationsFolder();
    // Every gallery entry of the group "TeamContent" in the settings store.
    static std::vector<CGalleryRepositoryEntry> InstalledGalleries();

private:
    LoadedCallback m_loadedCallback;
    bool m_valid = false;
};
