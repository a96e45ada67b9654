#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"
#include "foundation/ZoltaResult.h"

#include <vector>

class IGalleryManifestOpenObserver;
class IZOLTAXMLWriter;
struct CGalleryFolder;
struct CGalleryManifest;

// Result of MergeFrom when an install record for the same identifier existed and was replaced.
inline constexpr HRESULT S_GALLERY_RECORD_REPLACED = 4;

// Opening, saving, merging and rebuilding of a CGalleryManifest in all its containers: a
// gallery folder, its "imsmanifest.xml", a ".zip" or ".gallery" archive of the folder, the
// ".xbc" form, and the binary cache format.
class CGalleryManifestIO {
public:
    // Folder: its "imsmanifest.xml". ".zip"/".gallery": extracted into a new temporary folder
    // that Close deletes. ".xbc": converted (a step without work) and opened. ".xml": parsed, or
    // taken from the cache with `useCache`. Anything else: the binary reader. Afterwards a
    // manifest whose file can't be opened for update has all organizations read-only.
    // S_OK; S_FALSE when there is no file (the manifest stays empty, its path set); a failure
    // code otherwise (E_INVALIDARG for a null path). An archive that can't be extracted whole
    // gives E_FAIL: part of a package is no package.
    [[nodiscard]] static HRESULT Open(CGalleryManifest& manifest, const wchar_t* path,
                                      IGalleryManifestOpenObserver* observer, bool useCache);

    // Whether Open takes `path` for an archive by its name: ".zip" or ".gallery", in any case.
    static bool IsArchiveName(const CAtlString& path);

    // Opening an archive in two halves, the first of which may run on another thread, ahead:
    // UnpackArchive extracts `archive` into a new folder of the temporary folder (set even when
    // the extraction fails, and empty when none could be made) and tells whether it came out
    // whole. It touches no manifest, so it needs nothing of the caller's but the path.
    // OpenUnpacked then opens that folder's manifest as Open opens the archive itself.
    [[nodiscard]] static bool UnpackArchive(const CZoltaFilePath& archive, CZoltaDirectoryPath& folder);
    [[nodiscard]] static HRESULT OpenUnpacked(CGalleryManifest& manifest, const CZoltaDirectoryPath& folder, bool whole,
                                              IGalleryManifestOpenObserver* observer, bool useCache);

    // A folder (existing, or a new path without extension): created, "imsmanifest.xml" saved
    // into it and the content files copied there. ".gallery": packed from a temporary folder.
    // ".xbc": saved as a temporary ".gallery" and converted. ".xml": written under the manifest
    // lock to a hidden file beside the target, synced and renamed onto it (a failed write keeps
    // the old document and leaves nothing behind); with `refreshCache` the
    // cache follows unless the manifest is a temporary extraction. Anything else: the binary
    // writer. The manifest's own path does not change.
    [[nodiscard]] static HRESULT Save(CGalleryManifest& manifest, const wchar_t* path, bool refreshCache);

    // Frees the tree; a manifest that lives in a temporary extraction takes that folder along.
    static void Close(CGalleryManifest& manifest);

    // Installs `other` into `manifest`: its XML goes to the install record in "Uninstall", its
    // content files into the gallery folder, its organizations and categories are merged by
    // identifier (unknown ones move over, known ones take the new texts), and `other` is
    // closed. S_OK, S_GALLERY_RECORD_REPLACED when a record of the same identifier existed,
    // E_INVALIDARG for a null `other`, E_FAIL when a file can't be copied (an href that would
    // leave the gallery folder counts as such and is never touched). `outFirstItem`, if given,
    // receives the first root category of the last organization merged.
    // The package goes in whole or not at all: every file is checked and put out of sight
    // beside its target (or left in its extraction when that lies on the target's mount)
    // before the record is written and the files take their places. A file that no
    // record lists (the user's) is never replaced: it fails the package. `reason`, if given,
    // receives why a package failed.
    [[nodiscard]] static HRESULT MergeFrom(CGalleryManifest& manifest, CGalleryManifest* other,
                                           CGalleryFolder** outFirstItem, CAtlString* reason = nullptr);

    // Builds the manifest anew from the install records after one was removed, saves it, and
    // deletes the files that the old tree (or a `released` file, as full paths) referred to and
    // the new tree no longer does. No other file of the folder is ever deleted.
    [[nodiscard]] static HRESULT RebuildFromInstalled(CGalleryManifest& manifest,
                                                      const std::vector<CAtlString>& released = {});

    // Appends the gallery paths of the content files that `record` lists.
    [[nodiscard]] static HRESULT CollectRecordFiles(const CGalleryManifest& manifest, const CZoltaFilePath& record,
                                                    std::vector<CAtlString>& files);

    // Writes the whole document (declaration included) through `writer`.
    [[nodiscard]] static HRESULT WriteDocument(const CGalleryManifest& manifest, IZOLTAXMLWriter* writer);

    // The folder of the manifest file, and "Uninstall" beneath it.
    static CZoltaDirectoryPath GetFolder(const CGalleryManifest& manifest);
    static CZoltaDirectoryPath GetUninstallFolder(const CGalleryManifest& manifest);

    // "imsmanifest%x%x.xml" for a collection identifier: the hash of the identifier and of the
    // identifier reversed, in lower-case hexadecimal without padding.
    static CAtlString GetInstallRecordName(const wchar_t* identifier);
    static CZoltaFilePath GetInstallRecordPath(const CZoltaDirectoryPath& uninstallFolder, const wchar_t* identifier);
};
