// Local copies of a source: the gallery's data fetched from its server into a folder that can
// later serve as -source. Neither an installation nor the settings store is touched.
#include "app/CWorkFlow.h"

#include "libZoltaAtl/CAtlStringA.h"
#include "app/CCmdLineContext.h"
#include "configuration/CConfiguration.h"
#include "installation/CGalleryInstallation.h"
#include "installation/CInstallationController.h"
#include "app/CLIProgress.h"
#include "ui/Output.h"

#include <cstdio>
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

// Files the run could not copy, from the console's progress observer.
int FailedFiles(IGalleryInstallationObserver* progress)
{
    const auto* console = dynamic_cast<const CLIProgress*>(progress);
    return console ? console->GetFailedCount() : 0;
}

// A run that left files behind is no success: it says how many, and the exit code is 1.
int Conclude(int code, int failed)
{
    if (code != 0 || failed == 0)
        return code;
    std::fprintf(stderr, "%d %s failed.\n", failed, failed == 1 ? "file" : "files");
    std::fflush(stderr);
    return 1;
}

}  // namespace

bool CWorkFlow::PrepareDownload(const CCmdLineContext& context, const Configuration& configuration,
                                CWorkFlowEnvironment& environment)
{
    if (!configuration->IsLoaded()) {
        Output::Error(Output::eCouldNotLoadConfiguration, false);
        return false;
    }
    environment = MakeEnvironment(context, configuration);
    if (context.destination.IsEmpty()) {
        PrintErr("-destination not specified");
        return false;
    }
    // A download writes its own "Uninstall" folder and then removes it: never in an installed gallery.
    if (CInstallationController::HoldsInstalledGallery(CZoltaDirectoryPath(context.destination))) {
        PrintErr(CAtlStringA("The destination holds an installed gallery; choose another folder for the download: ") +
                 CAtlStringA(context.destination.GetString()));
        return false;
    }
    if (!CreateDestination(context.destination, "Could not create destination directory "))
        return false;
    configuration->SetInstallDirectory(CZoltaDirectoryPath(context.destination));
    if (!CheckWritableDestination(environment, false))
        return false;
    if (!context.source.IsEmpty() && !CGalleryInstallation::IsUrl(context.source)) {
        PrintErr("-source is local path");
        return false;
    }

    CInstallationController& controller = *environment.controller;
    controller.FindSource(context.source);
    // The server given is the one asked, not the configuration's default.
    if (!context.source.IsEmpty()) {
        CAtlString server = context.source;
        while (server.GetLength() > 0 && server[server.GetLength() - 1] == L'/')
            server.Truncate(server.GetLength() - 1);
        controller.SetSource(server);
    } else if (!controller.HasLocalGalleryData() && !CheckConnection(environment, controller.GetGalleryUrl(), false))
        return false;
    return true;
}

int CWorkFlow::DownloadAll(const CCmdLineContext& context, Configuration configuration)
{
    PrintErrors(context.errors);
    CWorkFlowEnvironment environment;
    if (!PrepareDownload(context, configuration, environment))
        return eFailure;
    int failed = 0;
    const int code = RunOnConsole(
        context,
        [&](IGalleryInstallationObserver* progress) {
            environment.controller->DownloadAll(progress);
            MoveCategoriesDocumentToTop(configuration->GetInstallDirectory());
            failed = FailedFiles(progress);
        },
        environment.controller.get());
    return Conclude(code, failed);
}

int CWorkFlow::DownloadSome(const CCmdLineContext& context, Configuration configuration)
{
    PrintErrors(context.errors);
    CWorkFlowEnvironment environment;
    std::vector<CAtlString> ids;
    if (!PrepareDownload(context, configuration, environment) ||
        !SelectCategories(context, *configuration, "nothing to download", "alias not found: ", ids))
        return eFailure;
    int failed = 0;
    const int code = RunOnConsole(
        context,
        [&](IGalleryInstallationObserver* progress) {
            environment.controller->DownloadSome(ids, progress);
            MoveCategoriesDocumentToTop(configuration->GetInstallDirectory());
            failed = FailedFiles(progress);
        },
        environment.controller.get());
    return Conclude(code, failed);
}
