#include "app/StartupSteps.h"

#include "app/CApplicationFactory.h"
#include "configuration/CConfiguration.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "gallery/GalleryLibrary.h"
#include "foundation/LanguageSettings.h"
#include "ui/UiResources.h"

#include <QApplication>
#include <QIcon>
#include <QLibraryInfo>
#include <QStyle>
#include <QTranslator>

namespace StartupSteps {

void LoadProgramCatalogue()
{
    // A missing catalogue is no failure: the texts stay English.
    (void)LoadCatalogue(QCoreApplication::applicationDirPath(), QStringLiteral("CuratoolId"), true);
    // The toolkit's own texts (Yes, No, Cancel of the standard buttons) in the same language,
    // where the system has its catalogue.
    static QTranslator toolkit;
    if (toolkit.load(QStringLiteral("qtbase_") + GetUILanguage(false),
                     QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&toolkit);
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

void ApplyWindowLook(CApplicationFactory& factory)
{
    // "plastique" went with Qt 4; Fusion is the nearest of the styles Qt 6 brings.
    if (!QApplication::setStyle(QStringLiteral("plastique")))
        QApplication::setStyle(QStringLiteral("Fusion"));
    factory.ApplyStyleSheet(qApp);
    InitUiResources();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/curatool.png")));
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
