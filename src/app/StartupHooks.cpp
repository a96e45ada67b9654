#include "StartupHooks.h"

#include "CConfiguration.h"
#include "CZoltaDirectoryPath.h"
#include "LanguageSettings.h"

#include <QCoreApplication>

namespace StartupHooks {

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

// Hook: waits for the gallery library's initialisation thread.
int InitializeGalleryLibrary()
{
    return 0;
}

// Hook: waits for the gallery library.
void ShutdownGalleryLibrary()
{
}

}  // namespace StartupHooks
