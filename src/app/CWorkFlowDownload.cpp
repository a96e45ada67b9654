// Local copies of a source: the gallery's data fetched from its server into a folder that can
// later serve as -source. Neither an installation nor the settings store is touched.
#include "CWorkFlow.h"

#include "CAtlStringA.h"
#include "CCmdLineContext.h"
#include "CConfiguration.h"
#include "CGalleryInstallation.h"
#include "CInstallationController.h"
#include "Output.h"

#include <filesystem>
#include <system_error>

namespace {

// A source has its categories document at the top; the run leaves it in "Uninstall". The move
// replaces a document already at the top; when it fails, "Uninstall" stays as it is.
void MoveCategoriesDocumentToTop(const CZoltaDirectoryPath& destination)
{
    CZoltaDirectoryPath uninstall = destination;
    uninstall.Append(L"Uninstall");
    const CZoltaFilePath kept = uninstall.GetFile(CGalleryInstallation::GalleryCategoriesXml);
    if (!kept.Exists())
        return;
    const CZoltaFilePath top = destination.GetFile(CGalleryInstallation::GalleryCategoriesXml);
    std::error_code error;
    std::filesystem::rename(ToFileSystemEncoding(kept.GetPath()).toStdString(),
                            ToFileSystemEncoding(top.GetPath()).toStdString(), error);
    if (!error)
        uninstall.Remove();
}

}  // namespace

bool CWorkFlow::PrepareDownload(const CCmdLineContext& context, const Configuration& configuration,
                                CWorkFlowEnvironment& environment)
{
    if (!configuration->IsLoaded())
    {
        Output::Error(Output::eCouldNotLoadConfiguration, false);
        return false;
    }
    environment = MakeEnvironment(context, configuration);
    if (context.destination.IsEmpty())
    {
        PrintErr("-destination not specified");
        return false;
    }
    // A download writes its own "Uninstall" folder and then removes it: never in an installed gallery.
    if (CInstallationController::HoldsInstalledGallery(CZoltaDirectoryPath(context.destination)))
    {
        PrintErr(CAtlStringA("The destination holds an installed gallery; choose another folder for the download: ") +
                 CAtlStringA(context.destination.GetString()));
        return false;
    }
    if (!CreateDestination(context.destination, "Could not create destination directory "))
        return false;
    configuration->SetInstallDirectory(CZoltaDirectoryPath(context.destination));
    if (!CheckWritableDestination(environment, false))
        return false;
    if (!context.source.IsEmpty() && !CGalleryInstallation::IsUrl(context.source))
    {
        PrintErr("-source is local path");
        return false;
    }

    CInstallationController& controller = *environment.controller;
    controller.FindSource(context.source);
    if (context.source.IsEmpty() && !controller.HasLocalGalleryData() &&
        !CheckConnection(environment, controller.GetGalleryUrl(), false))
        return false;
    return true;
}

int CWorkFlow::DownloadAll(const CCmdLineContext& context, Configuration configuration)
{
    PrintErrors(context.errors);
    CWorkFlowEnvironment environment;
    if (!PrepareDownload(context, configuration, environment))
        return eFailure;
    return RunOnConsole(context, [&](IGalleryInstallationObserver* progress) {
        environment.controller->DownloadAll(progress);
        MoveCategoriesDocumentToTop(configuration->GetInstallDirectory());
    }, environment.controller.get());
}

int CWorkFlow::DownloadSome(const CCmdLineContext& context, Configuration configuration)
{
    PrintErrors(context.errors);
    CWorkFlowEnvironment environment;
    std::vector<CAtlString> ids;
    if (!PrepareDownload(context, configuration, environment) ||
        !SelectCategories(context, *configuration, "nothing to download", "alias not found: ", ids))
        return eFailure;
    return RunOnConsole(context, [&](IGalleryInstallationObserver* progress) {
        environment.controller->DownloadSome(ids, progress);
        MoveCategoriesDocumentToTop(configuration->GetInstallDirectory());
    }, environment.controller.get());
}
