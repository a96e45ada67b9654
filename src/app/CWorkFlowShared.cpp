// The steps every console mode shares: the environment, the connection check, the destination
// and the -c aliases.
#include "app/CWorkFlow.h"

#include "libZoltaAtl/CAtlStringA.h"
#include "app/CCmdLineContext.h"
#include "configuration/CConfiguration.h"
#include "configuration/CGalleryData.h"
#include "installation/CInstallationController.h"
#include "app/CLIProgress.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "installation/GalleryDownloader.h"
#include "installation/InstalledXmlWriter.h"
#include "ui/Output.h"
#include "ui/PathSelector.h"
#include "ui/ProxyAuth.h"
#include "network/ProxyHandler.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <QCoreApplication>

#include <cstdio>

CWorkFlowEnvironment CWorkFlow::MakeEnvironment(const CCmdLineContext& context, Configuration configuration)
{
    ZOLTA_ASSERT(configuration != nullptr);
    CWorkFlowEnvironment environment;
    environment.context = &context;
    environment.configuration = configuration;
    environment.proxy = std::make_shared<ProxyHandler>();
    environment.proxy->SetPrompt(&ProxyAuth::Prompt);
    environment.downloader = std::make_shared<GalleryDownloader>(environment.proxy.get());
    environment.installedWriter = std::make_shared<InstalledXmlWriter>();
    environment.controller = std::make_shared<CInstallationController>(configuration);

    if (context.overrideProxy)
        environment.proxy->SetHost(context.proxy);
    else
        environment.proxy->LoadSettings();
    environment.proxy->SetCredentials(context.username, context.password);

    configuration->SetApplicationPath(CAtlString(QCoreApplication::applicationFilePath()));
    environment.installedWriter->SetConfiguration(configuration);
    environment.controller->AddObserver(environment.installedWriter.get());
    environment.controller->SetProxyObserver(environment.proxy.get());
    configuration->SetInstallDirectory(CZoltaDirectoryPath(context.destination));
    return environment;
}

// Wide text reaches the console as UTF-8, from its character pointer: the plain CAtlString
// conversion narrows each character to one byte and would garble non-ASCII paths and aliases.
bool CWorkFlow::CheckConnection(const CWorkFlowEnvironment& environment, const CAtlString& url, bool gui)
{
    ZOLTA_ASSERT(environment.controller != nullptr && environment.proxy != nullptr);
    // The address comes from the collection: shown with its control characters escaped.
    const CAtlStringA shown(CLIProgress::EscapeControls(url).GetString());
    PrintOut(CAtlStringA("Checking connection to: ") + shown);
    CAtlString reason;
    if (environment.controller->TestUrl(url, &reason)) {
        environment.proxy->SaveSettings();
        PrintOut("Check succeeded.");
        return true;
    }
    CInstallationController::SetConnectionAvailable(false);
    Output::ErrorWithReason(Output::eCouldNotDownload, shown,
                            CAtlStringA(CLIProgress::EscapeControls(reason).GetString()), gui);
    return false;
}

bool CWorkFlow::CreateDestination(const CAtlString& path, const char* complaint)
{
    if (CZoltaDirectoryPath(path).Create())
        return true;
    PrintErr(CAtlStringA(complaint) + CAtlStringA(path.GetString()));
    return false;
}

bool CWorkFlow::CheckWritableDestination(const CWorkFlowEnvironment& environment, bool gui)
{
    const CAtlString destination = environment.controller->GetDestination().GetPath();
    if (PathSelector::IsWritableDirectory(destination))
        return true;
    Output::Error(Output::eNoWritePermission, CAtlStringA(destination.GetString()), gui);
    return false;
}

bool CWorkFlow::SelectCategories(const CCmdLineContext& context, const CConfiguration& configuration,
                                 const char* nothingChosen, const char* complaint, std::vector<CAtlString>& ids)
{
    if (context.categoryAliases.empty()) {
        PrintOut(nothingChosen);
        return false;
    }
    const CGalleryData::CategoryMap& categories = configuration.GetGallery()->GetCategories();
    for (const CAtlString& alias : context.categoryAliases) {
        const auto found = categories.find(alias);
        if (found == categories.end())
            PrintErr(CAtlStringA(complaint) + CAtlStringA(alias.GetString()));
        else
            ids.push_back(found->second);
    }
    return true;
}

int CWorkFlow::RunOnConsole(const CCmdLineContext& context,
                            const std::function<void(IGalleryInstallationObserver*)>& step,
                            const CInstallationController* controller)
{
    CLIProgress progress;
    progress.SetVerbose(context.verbose);
    step(&progress);
    if (controller && !controller->GetProblem().IsEmpty()) {
        PrintErr(CAtlStringA(controller->GetProblem().GetString()));
        return eFailure;
    }
    PrintOut("Done.");
    return eSuccess;
}

void CWorkFlow::PrintOut(const CAtlStringA& line)
{
    std::fprintf(stdout, "%s\n", line.GetString());
    std::fflush(stdout);
}

void CWorkFlow::PrintErr(const CAtlStringA& line)
{
    std::fprintf(stderr, "%s\n", line.GetString());
    std::fflush(stderr);
}
