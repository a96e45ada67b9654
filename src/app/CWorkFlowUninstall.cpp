// Removal and registration from the console.
#include "app/CWorkFlow.h"

#include "libZoltaAtl/CAtlStringA.h"
#include "app/CCmdLineContext.h"
#include "configuration/CConfiguration.h"
#include "installation/CGalleryInstallation.h"
#include "installation/CInstallationController.h"
#include "app/CLIProgress.h"
#include "app/FileAssociations.h"
#include "ui/Output.h"
#include "ui/PathSelector.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <QDir>

namespace {

// What the engine's removal leaves of the gallery's own bookkeeping. Only the gallery's own files
// go, and of the folders only "Uninstall" and the gallery folder itself, each when empty: the
// folders above belong to the user. Failures are not reported: the packages are already gone.
void RemoveGalleryRecords(const CZoltaDirectoryPath& directory)
{
    const CZoltaFilePath manifest = directory.GetFile(L"imsmanifest.xml");
    if (manifest.Exists())
        manifest.Remove();
    CZoltaDirectoryPath uninstall = directory;
    uninstall.Append(L"Uninstall");
    for (const wchar_t* name : {CGalleryInstallation::GalleryCategoriesXml, CGalleryInstallation::LockFileName}) {
        const CZoltaFilePath file = uninstall.GetFile(name);
        if (file.Exists())
            file.Remove();
    }
    QDir().rmdir(uninstall.ToQString());
    QDir().rmdir(directory.ToQString());
}

// Records still there after the removal: the gallery is not gone, and must stay known.
bool HasRecords(const CZoltaDirectoryPath& directory)
{
    CZoltaDirectoryPath uninstall = directory;
    uninstall.Append(L"Uninstall");
    std::vector<CZoltaFilePath> records;
    uninstall.ListFiles(L"imsmanifest*.xml", records);
    return !records.empty();
}

}  // namespace

bool CWorkFlow::UninstallGallery(const CWorkFlowEnvironment& environment, IGalleryInstallationObserver* observer,
                                 bool gui)
{
    ZOLTA_ASSERT(environment.configuration != nullptr && environment.controller != nullptr);
    CConfiguration& configuration = *environment.configuration;
    if (!configuration.FindInstalled()) {
        Output::Error(Output::eCouldNotLoadConfiguration, gui);
        return false;
    }
    const CAtlString installed = configuration.GetInstallDirectory().GetPath();
    if (!PathSelector::IsWritableDirectory(installed)) {
        Output::Error(Output::eNoWritePermission, CAtlStringA(installed.GetString()), gui);
        return false;
    }

    const CZoltaDirectoryPath directory = environment.controller->UninstallAll(observer);
    // A gallery whose state can't be read keeps its registration, so that a later run can finish.
    const CAtlString& problem = environment.controller->GetProblem();
    if (!problem.IsEmpty() || HasRecords(directory)) {
        const CAtlString why =
            problem.IsEmpty() ? CAtlString(L"Some packages could not be removed from ") + directory.GetPath() : problem;
        PrintErr(CAtlStringA(why.GetString()) + CAtlStringA("\nThe gallery stays registered."));
        return false;
    }
    configuration.RemoveStoredFiles();
    configuration.Unregister();
    configuration.Reset();
    RemoveGalleryRecords(directory);
    PrintOut(Output::GetText(Output::eUninstallComplete));
    return true;
}

int CWorkFlow::Uninstall(const CCmdLineContext& context, Configuration configuration)
{
    PrintErrors(context.errors);
    if (!configuration->IsLoaded()) {
        Output::Error(Output::eCouldNotLoadConfiguration, false);
        return eFailure;
    }
    const CWorkFlowEnvironment environment = MakeEnvironment(context, configuration);
    CLIProgress progress;
    progress.SetVerbose(context.verbose);
    return UninstallGallery(environment, &progress, false) ? eSuccess : eFailure;
}

int CWorkFlow::Register(const CCmdLineContext& context, Configuration configuration)
{
    PrintErrors(context.errors);
    if (!context.remote) {
        if (!FileAssociations::Register(context.applicationPath, L"-configuration")) {
            Output::Error(Output::eCouldNotRegisterAssociations, false);
            return eFailure;
        }
    } else {
        // Taken back by MakeEnvironment below: here -remote only spares the file associations.
        configuration->SetApplicationPath(CAtlString());
    }
    if (!configuration->IsLoaded()) {
        if (context.configurationPath.IsEmpty())
            return eSuccess;
        Output::Error(Output::eCouldNotLoadConfiguration, false);
        return eFailure;
    }

    const CWorkFlowEnvironment environment = MakeEnvironment(context, configuration);
    if (!configuration->StoreConfiguration()) {
        Output::Error(Output::eCouldNotCopyConfiguration, false);
        return eFailure;
    }
    if (context.destination.IsEmpty())
        configuration->FindInstalled();
    configuration->ComposeRepositoryEntry();
    if (configuration->Register())
        return eSuccess;
    Output::Error(Output::eCouldNotSavePreferences, false);
    return eFailure;
}
