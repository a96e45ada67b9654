// The unattended installs. Their exit code reports the preparation only: a run that fails inside
// the engine has said so through the progress lines and still ends with "Done." and 0.
#include "app/CWorkFlow.h"

#include "libZoltaAtl/CAtlStringA.h"
#include "app/CCmdLineContext.h"
#include "configuration/CConfiguration.h"
#include "installation/CGalleryInstallation.h"
#include "installation/CInstallationController.h"
#include "app/CLIProgress.h"
#include "ui/Output.h"

#include <QFile>

#include <tinyxml2.h>

namespace {

// A categories document found under one of `paths` that cannot be parsed, said as such with the
// parser's error; empty when there is none, so that "not found" is the truth.
CAtlString UnreadableCategoriesDocument(const std::initializer_list<CAtlString>& paths, const CAtlString& folderName)
{
    for (const CAtlString& path : paths) {
        const CZoltaDirectoryPath data =
            CInstallationController::LocateGalleryData(CZoltaDirectoryPath(path), folderName);
        if (data.IsEmpty())
            continue;
        const CZoltaFilePath document = data.GetFile(CGalleryInstallation::GalleryCategoriesXml);
        QFile file(document.ToQString());
        if (!file.open(QIODevice::ReadOnly))
            return L"Cannot read " + document.GetPath();
        const QByteArray bytes = file.readAll();
        tinyxml2::XMLDocument xml(true, tinyxml2::PRESERVE_WHITESPACE);
        if (xml.Parse(bytes.constData(), static_cast<size_t>(bytes.size())) != tinyxml2::XML_SUCCESS)
            return L"Cannot parse " + document.GetPath() + L": " + CAtlString(xml.ErrorStr());
    }
    return CAtlString();
}

}  // namespace

bool CWorkFlow::PrepareInstall(const CCmdLineContext& context, const Configuration& configuration, bool some,
                               CWorkFlowEnvironment& environment)
{
    if (!configuration->IsLoaded()) {
        Output::Error(Output::eCouldNotLoadConfiguration, false);
        return false;
    }
    if (!configuration->StoreConfiguration()) {
        Output::Error(Output::eCouldNotCopyConfiguration, false);
        return false;
    }
    if (!configuration->FindInstalled())
        configuration->ComposeRepositoryEntry();

    environment = MakeEnvironment(context, configuration);

    CZoltaDirectoryPath destination(context.destination);
    if (!destination.IsEmpty()) {
        if (!CreateDestination(context.destination, some ? "Could not create destination directory "
                                                         : "Could not create destination directory: "))
            return false;
    } else {
        destination = configuration->DefaultInstallDirectory();
    }
    configuration->SetInstallDirectory(destination);
    if (!CheckWritableDestination(environment, false))
        return false;
    // A folder of the user's own files is no place for a gallery: refused before anything is written.
    CAtlString problem;
    if (!CInstallationController::CheckDestination(destination, problem)) {
        PrintErr(CAtlStringA(problem.GetString()));
        return false;
    }

    CInstallationController& controller = *environment.controller;
    if (!context.allowDownload) {
        if (!controller.FindSource(context.source) &&
            !controller.FindSource(configuration->GetSourceDirectory().GetPath())) {
            const CAtlString unreadable = UnreadableCategoriesDocument(
                {context.source, configuration->GetSourceDirectory().GetPath()}, controller.GetGalleryFolder());
            if (!unreadable.IsEmpty())
                PrintErr(CAtlStringA(CLIProgress::EscapeControls(unreadable).GetString()));
            else
                PrintErr(some ? "-source not specified, -allowdownload not set"
                              : "Gallery files not found on the source path, download is not allowed.");
            return false;
        }
    } else {
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
    return RunOnConsole(
        context, [&](IGalleryInstallationObserver* progress) { environment.controller->InstallAll(progress); },
        environment.controller.get());
}

int CWorkFlow::InstallSome(const CCmdLineContext& context, Configuration configuration)
{
    PrintErrors(context.errors);
    CWorkFlowEnvironment environment;
    std::vector<CAtlString> ids;
    if (!PrepareInstall(context, configuration, true, environment) ||
        !SelectCategories(context, *configuration, "Nothing to install", "Alias not found: ", ids))
        return eFailure;
    return RunOnConsole(
        context, [&](IGalleryInstallationObserver* progress) { environment.controller->InstallSome(ids, progress); },
        environment.controller.get());
}
