#pragma once

#include "CAtlString.h"

#include <QStringList>

#include <memory>
#include <vector>

class CConfiguration;
struct CCmdLineContext;

// The modes of the program. One of them is bound as the factory's runner while the command
// line is parsed and is called once, from the event loop; its result is the exit code:
// 0 success (also a user's cancel), 1 failure, 666 the usage text.
class CWorkFlow
{
public:
    using Configuration = std::shared_ptr<CConfiguration>;

    enum eResult
    {
        eSuccess = 0,
        eFailure = 1,
        eUsage = 666,
    };

    virtual ~CWorkFlow() = default;

    // Window-based start (CWorkFlowInstall.cpp).
    int Normal(const CCmdLineContext& context, Configuration configuration);
    // Unattended installs (CWorkFlowInstall.cpp).
    int InstallAll(const CCmdLineContext& context, Configuration configuration);
    int InstallSome(const CCmdLineContext& context, Configuration configuration);
    // Local copies of a source (CWorkFlowDownload.cpp).
    int DownloadAll(const CCmdLineContext& context, Configuration configuration);
    int DownloadSome(const CCmdLineContext& context, Configuration configuration);
    // Removal, registration and the disc start (CWorkFlowUninstall.cpp).
    int Uninstall(const CCmdLineContext& context, Configuration configuration);
    int UninstallAll(const CCmdLineContext& context, Configuration configuration);
    int Register(const CCmdLineContext& context, Configuration configuration);
    int WaitForCD(const CCmdLineContext& context, Configuration configuration);

    // The complaints, then the usage text on standard output; returns 666.
    int Usage(const CCmdLineContext& context, Configuration configuration);

    // Every mode's first step: the parse complaints under a heading on standard error.
    static void PrintErrors(const std::vector<CAtlString>& errors);

    // The usage text exactly as printed, empty first and last lines included.
    static const char* UsageText();

    // The command line to hand over a restart: the raw arguments, then the opened files.
    static QStringList ArgumentsForRestart(const CCmdLineContext& context);
    // The argument hand-over kept in the settings store for one restart. Loading removes it.
    static bool StoreArguments(const QStringList& arguments);
    static bool LoadArguments(QStringList& arguments);
};
