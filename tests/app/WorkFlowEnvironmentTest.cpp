// The connection check and the refusals of the work flows are checked on the real binary; here
// what the environment of a run is made of.
#include "CCmdLineContext.h"
#include "CConfiguration.h"
#include "CInstallationController.h"
#include "CWorkFlow.h"
#include "ProxyHandler.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

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

}  // namespace
