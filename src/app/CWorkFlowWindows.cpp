// The window-based modes: the main window over a chosen gallery, the removal of galleries with
// dialogs, and the start from a disc.
#include "app/CWorkFlow.h"

#include "libZoltaAtl/CAtlStringA.h"
#include "app/CCmdLineContext.h"
#include "configuration/CConfiguration.h"
#include "configuration/CGalleryRepositoryEntry.h"
#include "installation/CInstallationController.h"
#include "app/FileAssociations.h"
#include "ui/GalleryChooser.h"
#include "ui/MainWindow.h"
#include "ui/Output.h"
#include "ui/PathSelector.h"
#include "ui/ProgressDlg.h"
#include "network/ProxyHandler.h"
#include "ui/ReadProgressDlg.h"
#include "ui/WaitForCDDlg.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <QCoreApplication>
#include <QDir>
#include <QMessageBox>

namespace {

QString Title()
{
    return Output::GetTranslated(Output::eTitle);
}

// Reads the gallery's state with the reading window up; false when it can't be read.
bool OpenWithReadDialog(const CWorkFlowEnvironment& environment)
{
    ReadProgressDlg dialog(environment.configuration);
    dialog.ShowCentred();
    const bool opened = environment.controller->Open(dialog.GetObserver());
    dialog.hide();
    return opened;
}

// Removes the environment's gallery with a progress window up.
bool UninstallUnderProgress(const CWorkFlowEnvironment& environment, bool gui, QWidget* parent)
{
    ProgressDlg dialog(environment.controller, parent);
    dialog.setModal(true);
    dialog.show();
    const bool removed = CWorkFlow::UninstallGallery(environment, dialog.GetObserver(), gui);
    dialog.hide();
    return removed;
}

}  // namespace

int CWorkFlow::Normal(const CCmdLineContext& context, Configuration configuration)
{
    PrintErrors(context.errors);
    CWorkFlowEnvironment environment = MakeEnvironment(context, configuration);
    // When this started an update, the program is already on its way out.
    if (CheckSelfUpdate(environment))
        return eSuccess;

    if (!configuration->IsLoaded()) {
        if (!context.configurationPath.IsEmpty()) {
            // The option named something that could not be loaded.
            Output::Error(Output::eCouldNotLoadConfiguration, true);
        } else {
            CAtlString file;
            if (!context.defaultParams.empty())
                file = context.defaultParams.front();
            else if (!context.openedFiles.empty())
                file = context.openedFiles.front();
            if (!file.IsEmpty() && !configuration->OpenCollectionFile(file))
                Output::Error(Output::eCouldNotLoadConfiguration, true);
        }
    }
    if (!configuration->IsLoaded()) {
        GalleryChooser chooser(configuration,
                               [&context](std::shared_ptr<CConfiguration> chosen, bool gui, QWidget* parent) {
                                   return UninstallWithDialog(context, std::move(chosen), gui, parent);
                               });
        chooser.setModal(true);
        if (chooser.exec() == GalleryChooser::eCanceled)
            return eSuccess;
    }
    return RunMainWindow(environment);
}

int CWorkFlow::RunMainWindow(CWorkFlowEnvironment& environment)
{
    ZOLTA_ASSERT(environment.configuration != nullptr && environment.controller != nullptr &&
                 environment.proxy != nullptr && environment.context != nullptr);
    CConfiguration& configuration = *environment.configuration;
    CInstallationController& controller = *environment.controller;
    // A window is there to answer a proxy that asks who we are.
    environment.proxy->SetAllowPrompt(true);

    if (!configuration.IsLoaded())
        return eFailure;
    if (!configuration.StoreConfiguration()) {
        Output::Error(Output::eCouldNotCopyConfiguration, true);
        return eFailure;
    }
    if (!configuration.FindInstalled())
        configuration.ComposeRepositoryEntry();

    bool sourceAvailable = true;
    const CAtlString& source = environment.context->source;
    if (!source.IsEmpty()) {
        if (!controller.FindSource(source)) {
            Output::Error(Output::eSourceNotFound, true);
            return eFailure;
        }
    } else if (!controller.FindSource(configuration.GetSourceDirectory().GetPath())) {
        const CAtlString url = controller.GetGalleryUrl();
        if (url.IsEmpty() || !CheckConnection(environment, url, true)) {
            // Without a source what is installed can still be removed.
            if (!controller.HasInstalledData()) {
                Output::Error(Output::eSourceNotFound, true);
                return eFailure;
            }
            sourceAvailable = false;
        }
    }

    MainWindow window(environment.controller, environment.configuration, environment.proxy.get(), sourceAvailable);
    controller.AddObserver(&window);

    // The engine reads a gallery only where it can keep its lock, so a folder that can't be
    // written is settled first; a new one chosen there is read on the way.
    if (!PathSelector::IsWritableDirectory(controller.GetDestination().GetPath())) {
        if (!EnsureWritableDestination(environment))
            return eFailure;
    } else if (!OpenWithReadDialog(environment)) {
        if (!controller.GetProblem().IsEmpty())
            PrintErr(CAtlStringA(controller.GetProblem().GetString()));
        return eFailure;
    }

    const int result = window.exec();
    // A gallery whose records the user had deleted stays unknown.
    if (!window.RecordsRemoved())
        configuration.Register();
    return result;
}

bool CWorkFlow::EnsureWritableDestination(CWorkFlowEnvironment& environment)
{
    CInstallationController& controller = *environment.controller;
    const CAtlString destination = controller.GetDestination().GetPath();
    if (PathSelector::IsWritableDirectory(destination))
        return true;
    const CAtlStringA shown(destination.ToQString().toUtf8().constData());
    // Before the first read the folder itself tells whether a gallery is there.
    const bool installed = controller.GetInstallation()
                               ? !controller.NoneInstalled()
                               : CInstallationController::HoldsInstalledGallery(controller.GetDestination());
    if (installed) {
        // An installation can't be moved.
        QMessageBox::critical(nullptr, Title(), Output::GetTranslated(Output::eNoWritePermission, shown));
        return false;
    }
    const QString question = Output::GetTranslated(Output::eNoWritePermission, shown) + QLatin1Char('\n') +
                             Output::GetTranslated(Output::eSelectAnotherDirectory);
    if (QMessageBox::question(nullptr, Title(), question, QMessageBox::Ok, QMessageBox::Cancel) != QMessageBox::Ok)
        return false;
    return ChooseNewDestination(environment, nullptr);
}

bool CWorkFlow::ChooseNewDestination(CWorkFlowEnvironment& environment, QWidget* parent)
{
    PathSelector selector;
    selector.SetPath(environment.controller->GetDestination().GetPath());
    if (!selector.Exec(
            parent, CAtlString(QCoreApplication::translate("CWorkFlow", "Select a folder for new gallery location"))))
        return false;
    environment.configuration->SetInstallDirectory(CZoltaDirectoryPath(selector.GetPath()));
    OpenWithReadDialog(environment);
    return true;
}

bool CWorkFlow::UninstallWithDialog(const CCmdLineContext& context, Configuration configuration, bool gui,
                                    QWidget* parent)
{
    PrintErrors(context.errors);
    const CWorkFlowEnvironment environment = MakeEnvironment(context, configuration);
    return UninstallUnderProgress(environment, gui, parent);
}

int CWorkFlow::UninstallAll(const CCmdLineContext& context, Configuration)
{
    PrintErrors(context.errors);
    const std::vector<CGalleryRepositoryEntry> entries = CConfiguration::InstalledGalleries();
    if (!entries.empty()) {
        QMessageBox box(QMessageBox::Question, Title(),
                        QCoreApplication::translate("CWorkFlow", "Do you want to remove all the installed Galleries?"),
                        QMessageBox::Yes | QMessageBox::No);
        if (box.exec() == QMessageBox::Yes) {
            bool all = true;
            for (const CGalleryRepositoryEntry& entry : entries) {
                auto configuration = std::make_shared<CConfiguration>();
                if (!configuration->OpenInstalled(entry.id)) {
                    all = false;
                    continue;
                }
                const CWorkFlowEnvironment environment = MakeEnvironment(context, configuration);
                all = UninstallUnderProgress(environment, true, nullptr) && all;
            }
            // The stored collections go only when every gallery that used them has gone.
            if (all)
                QDir(CConfiguration::ConfigurationsFolder().ToQString()).removeRecursively();
        }
    }
    return FileAssociations::Unregister() ? eSuccess : eFailure;
}

int CWorkFlow::WaitForCD(const CCmdLineContext& context, Configuration configuration)
{
    PrintErrors(context.errors);
    if (context.source.IsEmpty()) {
        QMessageBox::critical(nullptr, Title(), QCoreApplication::translate("CWorkFlow", "Invalid argument."));
        return eFailure;
    }
    if (!configuration->IsLoaded()) {
        Output::Error(Output::eCouldNotLoadConfiguration, true);
        return eFailure;
    }
    CWorkFlowEnvironment environment = MakeEnvironment(context, configuration);
    CZoltaDirectoryPath found = CInstallationController::LocateGalleryData(CZoltaDirectoryPath(context.source),
                                                                           environment.controller->GetGalleryFolder());
    if (found.IsEmpty()) {
        WaitForCDDlg wait(configuration, context.source);
        if (wait.Exec() != QDialog::Accepted)
            return eSuccess;
        found = wait.GetFound();
    }

    // From here on the disc's data folder is the source.
    CCmdLineContext onDisc = context;
    onDisc.source = found.GetPath();
    environment.context = &onDisc;
    return RunMainWindow(environment);
}
