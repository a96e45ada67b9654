#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "app/CCmdLineContext.h"
#include "app/CCmdLineParser.h"
#include "app/CWorkFlow.h"
#include "app/CmdLineParameters.h"

#include <QString>
#include <QTranslator>

#include <memory>
#include <vector>

class CConfiguration;
class QApplication;
class QCoreApplication;

// Everything a run owns from start to end: the parsed command line, the configuration, the
// translator and style sheet of the collection, the option objects and the work flow to run.
// Made on main's stack before QApplication and destroyed after it.
class CApplicationFactory {
public:
    static const QString DEFAULT_STYLE_SHEET;

    CApplicationFactory();
    virtual ~CApplicationFactory();
    CApplicationFactory(const CApplicationFactory&) = delete;
    CApplicationFactory& operator=(const CApplicationFactory&) = delete;

    // Fills applicationPath and rawArguments from argv and parses the whole vector. A
    // -configuration or -guid loads the configuration on the way. The result is not needed:
    // complaints land in the context's errors and may have chosen the usage text.
    bool ParseCommandLine(int argc, char** argv);
    // Runs the parser over a vector whose first element is the program.
    bool ParseArguments(const std::vector<CAtlString>& arguments);

    // The run wants privileges and has not been given them yet.
    bool NeedsElevation() const;
    // Starts this program again with privileges and "-authorized"; returns the child's code.
    int RelaunchElevated();

    bool LoadConfigurationPath(const CAtlString& path);
    bool LoadConfigurationGuid(const CAtlString& guid);
    // Runs after every successful load: the collection's catalogue and style sheet.
    void OnConfigurationLoaded(const CConfiguration* configuration);

    void InstallTranslator(QCoreApplication* application);
    // Collects the files the desktop hands over as open events into the context's openedFiles.
    void InstallEventHook(QCoreApplication* application);
    void ApplyStyleSheet(QApplication* application);

    // Calls the chosen work flow and returns its exit code.
    int Run();
    // The action of --justupdated: the arguments kept over a self-update are parsed again.
    int JustUpdated();

    CCmdLineContext& Context() { return m_context; }
    const CCmdLineContext& Context() const { return m_context; }
    std::shared_ptr<CConfiguration> Configuration() const { return m_configuration; }
    // Still true after the parse only for the window-based work flows.
    bool WantsElevation() const { return m_elevation; }
    const QString& StyleSheet() const { return m_styleSheet; }

private:
    CWorkFlowFunction Bind(int (CWorkFlow::*mode)(const CCmdLineContext&, std::shared_ptr<CConfiguration>));
    void RegisterOptions();

    QString m_styleSheet;
    QTranslator m_translator;
    // The desktop's "open this file" events reach openedFiles through a filter on the
    // application (InstallEventHook); Linux desktops pass files on the command line instead.
    bool m_elevation = true;
    bool m_actionChosen = false;
    bool m_errorActionChosen = false;
    bool m_configurationChosen = false;
    CCmdLineContext m_context;
    CWorkFlow m_workFlow;

    CMultiValueParameter m_categoryAliases;
    CMultiValueParameter m_defaultParams;
    CStringParameter m_locale;
    CStringParameter m_proxy;
    CStringParameter m_username;
    CStringParameter m_password;
    CActionParameter m_uninstall;
    CActionParameter m_uninstallAll;
    CActionParameter m_installAll;
    CActionParameter m_installSome;
    CActionParameter m_register;
    CActionParameter m_downloadAll;
    CActionParameter m_downloadSome;
    CActionParameter m_justUpdated;
    CActionParameter m_help;
    CErrorParameter m_error;
    CPathParameter m_source;
    CPathParameter m_destination;
    CActionParameter m_waitForCD;
    CValueActionParameter m_configurationParam;
    CValueActionParameter m_guid;
    CFlagParameter m_remote;
    CFlagParameter m_allowDownload;
    CFlagParameter m_verbose;
    CFlagParameter m_authorized;
    CFlagParameter m_overrideProxy;

    CCmdLineParser m_parser;
    CWorkFlowFunction m_runner;
    std::shared_ptr<CConfiguration> m_configuration;
};
