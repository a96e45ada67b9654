#include "CCmdLineContext.h"
#include "CConfiguration.h"
#include "CInstallationController.h"
#include "CWorkFlow.h"
#include "Output.h"
#include "ProxyHandler.h"
#include "TestEnvironment.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTcpServer>

namespace {

TEST(WorkFlowEnvironment, OverriddenProxyTakesTheTextAsHostAndKeepsTheCredentials)
{
    CCmdLineContext context;
    context.overrideProxy = true;
    context.proxy = L"proxy.school.example:3128";
    context.username = L"teacher";
    context.password = L"secret";
    context.destination = L"/srv/galleries/sample";
    auto configuration = std::make_shared<CConfiguration>();

    const CWorkFlowEnvironment environment = CWorkFlow::MakeEnvironment(context, configuration);

    ASSERT_TRUE(environment.proxy && environment.controller && environment.downloader && environment.installedWriter);
    EXPECT_EQ(&context, environment.context);
    EXPECT_EQ(configuration, environment.controller->GetConfiguration());
    EXPECT_EQ(CAtlString(L"proxy.school.example:3128"), environment.proxy->GetHost());
    EXPECT_EQ(CAtlString(L"teacher"), environment.proxy->GetUser());
    EXPECT_EQ(CAtlString(L"secret"), environment.proxy->GetPassword());
    EXPECT_EQ(CAtlString(QCoreApplication::applicationFilePath()), configuration->GetApplicationPath());
    EXPECT_EQ(CAtlString(L"/srv/galleries/sample"), configuration->GetInstallDirectory().GetPath());
    EXPECT_EQ(CAtlString(L"/srv/galleries/sample"), environment.controller->GetDestination().GetPath());
}

TEST(WorkFlowEnvironment, StoredProxySettingsAreReadAndAnEmptyDestinationStillOverwrites)
{
    ProxyHandler stored;
    stored.SetHost(L"cache.local");
    ASSERT_TRUE(stored.SaveSettings());

    CCmdLineContext context;
    context.proxy = L"ignored:1";  // without -overrideproxy the stored settings hold
    auto configuration = std::make_shared<CConfiguration>();
    configuration->SetInstallDirectory(CZoltaDirectoryPath("/earlier/choice"));

    const CWorkFlowEnvironment environment = CWorkFlow::MakeEnvironment(context, configuration);

    EXPECT_EQ(CAtlString(L"cache.local"), environment.proxy->GetHost());
    EXPECT_TRUE(configuration->GetInstallDirectory().IsEmpty());

    ProxyHandler cleared;  // leave no proxy behind for the other tests of this process
    cleared.SetHost(L"");
    cleared.SaveSettings();
}

TEST(WorkFlowConnection, AnUnreachableServerReportsCodeSevenWithTheUrl)
{
    QTcpServer probe;  // a loopback port nobody listens on once the probe is closed
    ASSERT_TRUE(probe.listen(QHostAddress::LocalHost));
    const QString url = QStringLiteral("http://127.0.0.1:%1/gallery").arg(probe.serverPort());
    probe.close();

    Output::Initialize();
    CCmdLineContext context;
    const CWorkFlowEnvironment environment = CWorkFlow::MakeEnvironment(context, std::make_shared<CConfiguration>());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const bool ok = CWorkFlow::CheckConnection(environment, CAtlString(url), false);
    const std::string out = testing::internal::GetCapturedStdout();
    const std::string err = testing::internal::GetCapturedStderr();
    CInstallationController::SetConnectionAvailable(true);

    EXPECT_FALSE(ok);
    // The downloader adds its own reason on the next line.
    EXPECT_EQ(0u, out.rfind("Checking connection to: " + url.toStdString() + "\n", 0)) << out;
    EXPECT_EQ(std::string::npos, out.find("Check succeeded."));
    EXPECT_EQ("Could not download the file:\n" + url.toStdString() +
                  "\nMake sure the computer has an active Internet connection.\n",
              err);
}

TEST(WorkFlowUninstall, AGalleryThatWasNeverInstalledIsRefusedWithoutTouchingAnything)
{
    Output::Initialize();
    const std::string root = curatool::test::MakeScratchDir("never-installed");
    CCmdLineContext context;
    context.destination = CAtlString(QString::fromStdString(root));
    auto configuration = std::make_shared<CConfiguration>();
    const CWorkFlowEnvironment environment = CWorkFlow::MakeEnvironment(context, configuration);

    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const bool removed = CWorkFlow::UninstallGallery(environment, nullptr, false);
    const std::string out = testing::internal::GetCapturedStdout();
    const std::string err = testing::internal::GetCapturedStderr();

    EXPECT_FALSE(removed);
    EXPECT_EQ("", out);
    EXPECT_EQ("Could not load the configuration.\n", err);
}

}  // namespace
