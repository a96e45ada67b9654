#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "app/CWorkFlowEnvironment.h"

#include <QStringList>

#include <functional>

#include <memory>
#include <vector>

class CInstallationController;
class CSelfUpdate;
class CConfiguration;
class CAtlStringA;
class QWidget;
class IGalleryInstallationObserver;
struct CCmdLineContext;

// The modes of the program. One of them is bound as the factory's runner while the command
// line is parsed and is called once, from the event loop; its result is the exit code:
// 0 success (also a user's cancel), 1 failure, 666 the usage text.
class CWorkFlow {
public:
    using Configuration = std::shared_ptr<CConfiguration>;

    enum eResult {
        eSuccess = 0,
        eFailure = 1,
        eUsage = 666,
    };

    virtual ~CWorkFlow() = default;

    // Window-based start (CWorkFlowWindows.cpp).
    int Normal(const CCmdLineContext& context, Configuration configuration);
    // Unattended installs (CWorkFlowInstall.cpp).
    int InstallAll(const CCmdLineContext& context, Configuration configuration);
    int InstallSome(const CCmdLineContext& context, Configuration configuration);
    // Local copies of a source (CWorkFlowDownload.cpp).
    int DownloadAll(const CCmdLineContext& context, Configuration configuration);
    int DownloadSome(const CCmdLineContext& context, Configuration configuration);
    // Removal and registration from the console (CWorkFlowUninstall.cpp).
    int Uninstall(const CCmdLineContext& context, Configuration configuration);
    int Register(const CCmdLineContext& context, Configuration configuration);
    // Removal of every gallery, and the start from a disc, with windows (CWorkFlowWindows.cpp).
    int UninstallAll(const CCmdLineContext& context, Configuration configuration);
    int WaitForCD(const CCmdLineContext& context, Configuration configuration);

    // The complaints, then the usage text on standard output; returns 666.
    int Usage(const CCmdLineContext& context, Configuration configuration);

    // Every mode's first step: the parse complaints under a heading on standard error.
    static void PrintErrors(const std::vector<CAtlString>& errors);

    // The usage text exactly as printed, empty first and last lines included.
    static const char* UsageText();

    // The controller, proxy, downloader and install record writer of a run, set up from the
    // command line; the install directory is the -destination as given, even when empty.
    static CWorkFlowEnvironment MakeEnvironment(const CCmdLineContext& context, Configuration configuration);
    // Fetches the categories document from `url`; keeps the proxy settings that worked.
    static bool CheckConnection(const CWorkFlowEnvironment& environment, const CAtlString& url, bool gui);
    // Removes the installed gallery of the environment's configuration and what registers it.
    static bool UninstallGallery(const CWorkFlowEnvironment& environment, IGalleryInstallationObserver* observer,
                                 bool gui);

    // The window-based end of Normal and WaitForCD: finds the source, reads the gallery and hands
    // over to the main window; its result is the window's.
    static int RunMainWindow(CWorkFlowEnvironment& environment);
    // The destination can be written, or a new one was chosen and read; asks the user.
    static bool EnsureWritableDestination(CWorkFlowEnvironment& environment);
    // Asks for a folder that can be written and reads the gallery state there. False on cancel.
    static bool ChooseNewDestination(CWorkFlowEnvironment& environment, QWidget* parent);
    // Removes one gallery under a progress dialog; what the gallery chooser offers.
    static bool UninstallWithDialog(const CCmdLineContext& context, Configuration configuration, bool gui,
                                    QWidget* parent);

    // The command line to hand over a restart: the raw arguments, then the opened files.
    static QStringList ArgumentsForRestart(const CCmdLineContext& context);
    // The argument hand-over kept in the settings store for one restart. Loading removes it.
    static bool StoreArguments(const QStringList& arguments);
    static bool LoadArguments(QStringList& arguments);
    // Asks whether to fetch a newer published version; on yes downloads and starts its installer
    // and leaves the event loop. True when the program is on its way out for the update
    // (CWorkFlowSelfUpdate.cpp). The second form checks with the given update object.
    static bool CheckSelfUpdate(const CWorkFlowEnvironment& environment);
    static bool CheckSelfUpdate(const CWorkFlowEnvironment& environment, CSelfUpdate& update);

private:
    // The steps the two unattended installs share, up to the engine's run. `some` selects the
    // partial install's texts. False when the run must end with failure.
    static bool PrepareInstall(const CCmdLineContext& context, const Configuration& configuration, bool some,
                               CWorkFlowEnvironment& environment);
    static bool PrepareDownload(const CCmdLineContext& context, const Configuration& configuration,
                                CWorkFlowEnvironment& environment);
    // The category ids of the -c aliases, in command-line order; unknown ones are reported with
    // `complaint` and skipped. False, after printing `nothingChosen`, when no -c was given.
    static bool SelectCategories(const CCmdLineContext& context, const CConfiguration& configuration,
                                 const char* nothingChosen, const char* complaint, std::vector<CAtlString>& ids);
    // Runs an engine step with the console's progress lines, then says "Done.": what the step
    // itself reports stays in those lines.
    // Prints "Done." and gives 0, unless the controller stopped before changing anything: then
    // its problem goes to standard error and the result is 1.
    static int RunOnConsole(const CCmdLineContext& context,
                            const std::function<void(IGalleryInstallationObserver*)>& step,
                            const CInstallationController* controller = nullptr);
    // Makes the folder with its parents; on failure prints `complaint` and the path.
    static bool CreateDestination(const CAtlString& path, const char* complaint);
    static bool CheckWritableDestination(const CWorkFlowEnvironment& environment, bool gui);
    // One line on standard output or standard error, 8-bit.
    static void PrintOut(const CAtlStringA& line);
    static void PrintErr(const CAtlStringA& line);
};
