#include "StartupSteps.h"

#include "CConfiguration.h"
#include "CZoltaDirectoryPath.h"
#include "GalleryLibrary.h"
#include "LanguageSettings.h"

#include <QCoreApplication>

namespace StartupSteps {

void LoadProgramCatalogue()
{
    // A missing catalogue is no failure: the texts stay English.
    (void)LoadCatalogue(QCoreApplication::applicationDirPath(), QStringLiteral("CuratoolId"), true);
}

QString ConfigurationCatalogueDirectory(const CConfiguration& configuration)
{
    CZoltaDirectoryPath directory = configuration.GetDirectory();
    if (directory.IsEmpty())
        return QString();
    directory.Append(CAtlString(L"Languages"));
    directory.Append(CAtlString(GetUILanguage(false)));
    return directory.ToQString();
}

int InitializeGalleryLibrary()
{
    return static_cast<int>(GalleryLibraryInitialize());
}

void ShutdownGalleryLibrary()
{
    GalleryLibraryShutdown();
}

}  // namespace StartupSteps
