// The unattended installs. Their exit code reports the preparation only: a run that fails inside
// the engine has said so through the progress lines and still ends with "Done." and 0.
#include "CWorkFlow.h"

#include "CAtlStringA.h"
#include "CCmdLineContext.h"
#include "CConfiguration.h"
#include "CInstallationController.h"
#include "Output.h"

int CWorkFlow::Normal(const CCmdLineContext& context, Configuration)
{
    // The windows of this mode are not part of the program yet.
    PrintErrors(context.errors);
    return eSuccess;
}

bool CWorkFlow::PrepareInstall(const CCmdLineContext& context, const Configuration& configuration, bool some,
                               CWorkFlowEnvironment& environment)
{
    if (!configuration->IsLoaded())
    {
        Output::Error(Output::eCouldNotLoadConfiguration, false);
        return false;
    }
    if (!configuration->StoreConfiguration())
    {
        Output::Error(Output::eCouldNotCopyConfiguration, false);
        return false;
    }
    if (!configuration->FindInstalled())
        configuration->ComposeRepositoryEntry();

    environment = MakeEnvironment(context, configuration);

    CZoltaDirectoryPath destination(context.destination);
    if (!destination.IsEmpty())
    {
        if (!CreateDestination(context.destination, some ? "Could not create destination directory "
                                                         : "Could not create destination directory: "))
            return false;
    }
    else
    {
        destination = configuration->DefaultInstallDirectory();
    }
    configuration->SetInstallDirectory(destination);
    if (!CheckWritableDestination(environment, false))
        return false;
    // A folder of the user's own files is no place for a gallery: refused before anything is written.
    CAtlString problem;
    if (!CInstallationController::CheckDestination(destination, problem))
    {
        PrintErr(CAtlStringA(problem.GetString()));
        return false;
    }

    CInstallationController& controller = *environment.controller;
    if (!context.allowDownload)
    {
        if (!controller.FindSource(context.source) &&
            !controller.FindSource(configuration->GetSourceDirectory().GetPath()))
        {
            PrintErr(some ? "-source not specified, -allowdownload not set"
                          : "Gallery files not found on the source path, download is not allowed.");
            return false;
        }
    }
    else
    {
        controller.FindSource(CAtlString());
        if (!controller.HasLocalGalleryData() && !CheckConnection(environment, controller.GetGalleryUrl(), false))
            return false;
    }

    if (context.remote)
        configuration->SetApplicationPath(CAtlString());
    configuration->Register();
    return true;
}

int CWorkFlow::InstallAll(const CCmdLineContext& context, Configuration configuration)
{
    PrintErrors(context.errors);
    CWorkFlowEnvironment environment;
    if (!PrepareInstall(context, configuration, false, environment))
        return eFailure;
    return RunOnConsole(context, [&](IGalleryInstallationObserver* progress) {
        environment.controller->InstallAll(progress);
    }, environment.controller.get());
}

int CWorkFlow::InstallSome(const CCmdLineContext& context, Configuration configuration)
{
    PrintErrors(context.errors);
    CWorkFlowEnvironment environment;
    std::vector<CAtlString> ids;
    if (!PrepareInstall(context, configuration, true, environment) ||
        !SelectCategories(context, *configuration, "Nothing to install", "Alias not found: ", ids))
        return eFailure;
    return RunOnConsole(context, [&](IGalleryInstallationObserver* progress) {
        environment.controller->InstallSome(ids, progress);
    }, environment.controller.get());
}
