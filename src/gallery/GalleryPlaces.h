#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"

// The fixed places of galleries on disk and in the settings store. Absolute system places go
// through curatool::SystemLocation, so that a test root moves them all.

// The user's own gallery folder: manifest caches and My Content live here.
CZoltaDirectoryPath GetUserGalleryFolder();
// The user's own collection: <user gallery>/My Content/imsmanifest.xml.
CZoltaFilePath GetMyContentManifestPath();
// The folder of My Content of versions before 9.2; it never exists in this system.
CZoltaDirectoryPath GetOldMyContentFolder();
// "/usr/local/ZOLTA Tavolite Software", moved by the system root.
CZoltaDirectoryPath GetInstallationBaseFolder();
// <installation base>/Gallery/imsmanifest.xml if that file exists, else the machine's fixed one.
CZoltaFilePath GetSharedGalleryManifestPath();

// Settings of the gallery library (user scope).
extern const wchar_t kGallerySettingsSection[];
extern const wchar_t kLanguageSettingsSection[];
// Sections whose subkeys register galleries: machine-wide and the user's own.
extern const wchar_t kMachineGalleriesSection[];
extern const wchar_t kUserGalleriesSection[];
