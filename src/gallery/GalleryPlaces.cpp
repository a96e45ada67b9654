#include "gallery/GalleryPlaces.h"

#include "foundation/SystemLocation.h"

#include <QDir>

const wchar_t kGallerySettingsSection[] = L"Software\\ZOLTA Technologies Inc.\\ZOLTA Tavolite Software\\Gallery";
const wchar_t kLanguageSettingsSection[] = L"Software\\ZOLTA Technologies Inc.\\ZOLTA Tavolite Software\\Language";
const wchar_t kMachineGalleriesSection[] = L"Software\\ZOLTA Technologies Inc.\\Gallery\\TeamContent";
const wchar_t kUserGalleriesSection[] = L"Software\\ZOLTA Technologies Inc.\\Gallery\\PersonalTeamContent";

CZoltaDirectoryPath GetUserGalleryFolder()
{
    return CZoltaDirectoryPath(QDir::homePath() +
                               QStringLiteral("/.ZOLTA Technologies Inc/ZOLTA Tavolite Software/Gallery"));
}

CZoltaFilePath GetMyContentManifestPath()
{
    CZoltaDirectoryPath folder = GetUserGalleryFolder();
    folder.Append(L"My Content");
    return folder.GetFile(L"imsmanifest.xml");
}

CZoltaDirectoryPath GetOldMyContentFolder()
{
    return CZoltaDirectoryPath("/dev/null");
}

CZoltaDirectoryPath GetInstallationBaseFolder()
{
    return CZoltaDirectoryPath(curatool::SystemLocation(QStringLiteral("/usr/local/ZOLTA Tavolite Software")));
}

CZoltaFilePath GetSharedGalleryManifestPath()
{
    CZoltaDirectoryPath folder = GetInstallationBaseFolder();
    folder.Append(L"Gallery");
    const CZoltaFilePath configured = folder.GetFile(L"imsmanifest.xml");
    if (configured.Exists())
        return configured;
    return CZoltaFilePath(curatool::SystemLocation(
        QStringLiteral("/usr/local/ZOLTA Technologies Inc/ZOLTA Tavolite Software/Gallery/imsmanifest.xml")));
}
