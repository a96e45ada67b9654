#include "app/CApplicationFactory.h"

#include "ui/CAuthentication.h"
#include "configuration/CConfiguration.h"
#include "app/StartupSteps.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>

const QString CApplicationFactory::DEFAULT_STYLE_SHEET = QStringLiteral(
    "#labelGalleryName {font: bold 12pt}#labelCategories {font: bold 10pt}#labelUpdates {font: bold 10pt}"
    "#labelActions {font: bold 10pt}QTreeWidget {font-size: 10pt}QListWidget {font-size: 10pt}");

namespace {

// Every argument goes through QString: the command line may hold non-ASCII paths.
CAtlString FromLocal8Bit(const char* text)
{
    return CAtlString(QString::fromLocal8Bit(text));
}

}  // namespace

CApplicationFactory::CApplicationFactory()
    : m_styleSheet(DEFAULT_STYLE_SHEET),
      m_categoryAliases(&m_context.categoryAliases),
      m_defaultParams(&m_context.defaultParams),
      m_locale(&m_context.locale),
      m_proxy(&m_context.proxy),
      m_username(&m_context.username),
      m_password(&m_context.password),
      m_uninstall(&m_actionChosen, &m_elevation, false, &m_runner, Bind(&CWorkFlow::Uninstall)),
      m_uninstallAll(&m_actionChosen, &m_elevation, true, &m_runner, Bind(&CWorkFlow::UninstallAll)),
      m_installAll(&m_actionChosen, &m_elevation, false, &m_runner, Bind(&CWorkFlow::InstallAll)),
      m_installSome(&m_actionChosen, &m_elevation, false, &m_runner, Bind(&CWorkFlow::InstallSome)),
      m_register(&m_actionChosen, &m_elevation, false, &m_runner, Bind(&CWorkFlow::Register)),
      m_downloadAll(&m_actionChosen, &m_elevation, false, &m_runner, Bind(&CWorkFlow::DownloadAll)),
      m_downloadSome(&m_actionChosen, &m_elevation, false, &m_runner, Bind(&CWorkFlow::DownloadSome)),
      m_justUpdated(&m_actionChosen, &m_elevation, true, &m_runner,
                    [this](const CCmdLineContext&, std::shared_ptr<CConfiguration>) { return JustUpdated(); }),
      m_help(&m_actionChosen, &m_elevation, false, &m_runner, Bind(&CWorkFlow::Usage)),
      m_error(&m_errorActionChosen, &m_elevation, &m_runner, Bind(&CWorkFlow::Usage), &m_context.errors),
      m_source(&m_context.source),
      m_destination(&m_context.destination),
      m_waitForCD(&m_actionChosen, &m_elevation, true, &m_runner, Bind(&CWorkFlow::WaitForCD)),
      m_configurationParam([this](const CAtlString& path) { return LoadConfigurationPath(path); },
                           &m_configurationChosen),
      m_guid([this](const CAtlString& guid) { return LoadConfigurationGuid(guid); }, &m_configurationChosen),
      m_remote(&m_context.remote),
      m_allowDownload(&m_context.allowDownload),
      m_verbose(&m_context.verbose),
      m_authorized(&m_context.authorized),
      m_overrideProxy(&m_context.overrideProxy),
      m_runner(Bind(&CWorkFlow::Normal)),
      m_configuration(std::make_shared<CConfiguration>())
{
    m_configuration->SetLoadedCallback(
        [this](const CConfiguration* configuration) { OnConfigurationLoaded(configuration); });
    RegisterOptions();
}

CApplicationFactory::~CApplicationFactory() = default;

CWorkFlowFunction CApplicationFactory::Bind(int (CWorkFlow::*mode)(const CCmdLineContext&,
                                                                   std::shared_ptr<CConfiguration>))
{
    return [this, mode](const CCmdLineContext& context, std::shared_ptr<CConfiguration> configuration) {
        return (m_workFlow.*mode)(context, std::move(configuration));
    };
}

void CApplicationFactory::RegisterOptions()
{
    m_parser.SetDefaultParam(&m_defaultParams);
    m_parser.SetErrorParam(&m_error);

    m_parser.AddValueParam(L"locale", &m_locale);
    m_parser.AddValueParam(L"proxy", &m_proxy);
    m_parser.AddValueParam(L"username", &m_username);
    m_parser.AddValueParam(L"password", &m_password);
    m_parser.AddValueParam(L"source", &m_source);
    m_parser.AddValueParam(L"destination", &m_destination);
    m_parser.AddValueParam(L"guid", &m_guid);
    m_parser.AddValueParam(L"configuration", &m_configurationParam);
    m_parser.AddValueParam(L"c", &m_categoryAliases);

    m_parser.AddFlagParam(L"remote", &m_remote);
    m_parser.AddFlagParam(L"allowdownload", &m_allowDownload);
    m_parser.AddFlagParam(L"verbose", &m_verbose);
    m_parser.AddFlagParam(L"authorized", &m_authorized);
    m_parser.AddFlagParam(L"overrideproxy", &m_overrideProxy);
    m_parser.AddFlagParam(L"waitforcd", &m_waitForCD);
    m_parser.AddFlagParam(L"uninstall", &m_uninstall);
    m_parser.AddFlagParam(L"uninstallall", &m_uninstallAll);
    m_parser.AddFlagParam(L"installall", &m_installAll);
    m_parser.AddFlagParam(L"installsome", &m_installSome);
    m_parser.AddFlagParam(L"register", &m_register);
    m_parser.AddFlagParam(L"downloadall", &m_downloadAll);
    m_parser.AddFlagParam(L"downloadsome", &m_downloadSome);
    m_parser.AddFlagParam(L"justupdated", &m_justUpdated);
    m_parser.AddFlagParam(L"help", &m_help);
    m_parser.AddFlagParam(L"?", &m_help);
    m_parser.AddFlagParam(L"h", &m_help);
}

bool CApplicationFactory::ParseCommandLine(int argc, char** argv)
{
    std::vector<CAtlString> arguments;
    if (argc > 0 && argv[0])
        m_context.applicationPath = CAtlString(QFileInfo(QString::fromLocal8Bit(argv[0])).canonicalFilePath());
    arguments.push_back(m_context.applicationPath);

    m_context.rawArguments.clear();
    for (int i = 1; i < argc; ++i) {
        m_context.rawArguments << QString::fromLocal8Bit(argv[i]);
        arguments.push_back(FromLocal8Bit(argv[i]));
    }
    return ParseArguments(arguments);
}

bool CApplicationFactory::ParseArguments(const std::vector<CAtlString>& arguments)
{
    return m_parser.Parse(arguments);
}

bool CApplicationFactory::NeedsElevation() const
{
    return !m_context.authorized && m_elevation;
}

int CApplicationFactory::RelaunchElevated()
{
    QStringList arguments = m_context.rawArguments;
    for (const CAtlString& file : m_context.openedFiles)
        arguments << file.ToQString();
    arguments << QStringLiteral("-authorized");

    CAuthentication authentication;
    return authentication.RunAs(m_context.applicationPath.ToQString(), arguments, QString(), true);
}

bool CApplicationFactory::LoadConfigurationPath(const CAtlString& path)
{
    const QFileInfo info(path.ToQString());
    m_context.configurationPath = CAtlString(info.absoluteFilePath());
    if (info.isFile())
        return m_configuration->OpenCollectionFile(m_context.configurationPath);
    if (info.isDir())
        return m_configuration->OpenCollectionDirectory(m_context.configurationPath);
    return false;
}

bool CApplicationFactory::LoadConfigurationGuid(const CAtlString& guid)
{
    return m_configuration->OpenInstalled(guid);
}

void CApplicationFactory::OnConfigurationLoaded(const CConfiguration* configuration)
{
    if (!configuration)
        return;

    const QString catalogueDirectory = StartupSteps::ConfigurationCatalogueDirectory(*configuration);
    if (!catalogueDirectory.isEmpty())
        (void)m_translator.load(QStringLiteral("CuratoolId"), catalogueDirectory);

    // A collection may add to the look; a missing or unreadable sheet leaves it as it was.
    const CAtlString styleSheetPath = configuration->GetStyleSheetPath();
    if (styleSheetPath.IsEmpty())
        return;
    QFile file(styleSheetPath.ToQString());
    if (!file.exists() || !file.open(QIODevice::ReadOnly))
        return;
    const QByteArray text = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return;
    m_styleSheet = DEFAULT_STYLE_SHEET + QString::fromUtf8(text);
    ApplyStyleSheet(qobject_cast<QApplication*>(QCoreApplication::instance()));
}

void CApplicationFactory::InstallTranslator(QCoreApplication* application)
{
    if (application)
        application->installTranslator(&m_translator);
}

void CApplicationFactory::ApplyStyleSheet(QApplication* application)
{
    if (application)
        application->setStyleSheet(m_styleSheet);
}

int CApplicationFactory::Run()
{
    // A copy: the work flow may rebind the runner while it runs (--justupdated does).
    const CWorkFlowFunction runner = m_runner;
    return runner(m_context, m_configuration);
}

int CApplicationFactory::JustUpdated()
{
    m_runner = Bind(&CWorkFlow::Normal);

    QStringList stored;
    if (CWorkFlow::LoadArguments(stored)) {
        m_context.rawArguments = stored;
        std::vector<CAtlString> arguments{m_context.applicationPath};
        for (const QString& argument : stored)
            arguments.push_back(CAtlString(argument));
        // --justupdated itself took the one exclusive action; the stored arguments choose anew.
        m_actionChosen = false;
        ParseArguments(arguments);
    }
    return Run();
}
