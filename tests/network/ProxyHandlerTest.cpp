// ProxyHandler: its two stored values, and when it hands out credentials or asks for them.

#include "support/TestEnvironment.h"

#include "network/ProxyHandler.h"

#include "foundation/CSettingsStore.h"
#include "foundation/QThreadWithLoop.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QThread>

#include <gtest/gtest.h>

#include <vector>

namespace {

// Where the store lands with the process identity blank: the fixed organisation's own file,
// whatever the process calls itself.
QString ProxyStoreFile()
{
    return QSettings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("zoltaworks"), QString()).fileName();
}

class ProxyHandlerSettings : public testing::Test {
protected:
    void SetUp() override
    {
        QFile::remove(ProxyStoreFile());
        QCoreApplication::setOrganizationName(QStringLiteral("Curatool Org"));
        QCoreApplication::setOrganizationDomain(QStringLiteral("curatool.example"));
        QCoreApplication::setApplicationName(QStringLiteral("Curatool"));
    }
    void TearDown() override
    {
        QCoreApplication::setOrganizationName(QString());
        QCoreApplication::setOrganizationDomain(QString());
        QCoreApplication::setApplicationName(QString());
    }
};

// Records each dialog and answers with what the test scripted.
struct ScriptedPrompt {
    struct Call {
        ProxyPromptValues shown;
        bool hostEditable;
        QObject* parent;
        bool onInterfaceThread;
    };
    bool accept = true;
    ProxyPromptValues answer;
    std::vector<Call> calls;

    ProxyPrompt Get()
    {
        return [this](ProxyPromptValues& values, bool hostEditable, QObject* parent) {
            calls.push_back(
                {values, hostEditable, parent, QThread::currentThread() == QCoreApplication::instance()->thread()});
            if (accept)
                values = answer;
            return accept;
        };
    }
};

}  // namespace

TEST_F(ProxyHandlerSettings, HostAndPortLiveUnderTheFixedNameAndCredentialsNowhere)
{
    ProxyHandler saved;
    ProxyPromptValues values{CAtlString(L"proxy.example"), 3128, CAtlString(L"me"), CAtlString(L"secret")};
    ScriptedPrompt prompt;
    prompt.answer = values;
    saved.SetPrompt(prompt.Get());
    ASSERT_TRUE(saved.ConfigureDialog(nullptr));  // a new host is saved at once
    EXPECT_TRUE(saved.SaveSettings());

    // The process keeps its own identity.
    EXPECT_EQ(QStringLiteral("Curatool Org"), QCoreApplication::organizationName());
    EXPECT_EQ(QStringLiteral("Curatool"), QCoreApplication::applicationName());

    EXPECT_EQ(qEnvironmentVariable("XDG_CONFIG_HOME") + "/zoltaworks.conf", ProxyStoreFile());
    QSettings store(ProxyStoreFile(), QSettings::IniFormat);
    const QString section =
        QStringLiteral("Software/ZOLTA Technologies Inc./ZOLTA Tavolite Software/ProxyInformation/");
    EXPECT_EQ(QStringLiteral("proxy.example"), store.value(section + "HttpProxyHost").toString());
    EXPECT_EQ(3128, store.value(section + "HttpProxyPort").toInt());
    const QString everything = QString::fromStdString(curatool::test::ReadFile(ProxyStoreFile().toStdString()));
    EXPECT_FALSE(everything.contains("secret") || everything.contains("me"));

    ProxyHandler loaded;
    loaded.LoadSettings();
    EXPECT_EQ(CAtlString(L"proxy.example"), loaded.GetHost());
    EXPECT_EQ(CAtlString(L""), loaded.GetUser());

    // A port change alone is not saved.
    prompt.answer.port = 9999;
    ASSERT_TRUE(saved.ConfigureDialog(nullptr));
    EXPECT_EQ(9999, saved.GetPort());
    loaded.LoadSettings();
    EXPECT_EQ(3128, loaded.GetPort());
}

TEST_F(ProxyHandlerSettings, AbsentValuesGiveEmptyHostAndPort8080AndSetHostTakesTheTextAsItStands)
{
    ProxyHandler handler;
    handler.SetHost(CAtlString(L"proxy.example:3128"));
    CAtlString host, user, password;
    int port = -1;
    handler.GetProxy(host, port, user, password);
    EXPECT_EQ(CAtlString(L"proxy.example:3128"), host);
    EXPECT_EQ(0, port);

    handler.LoadSettings();  // nothing stored: the host read replaces the one set
    EXPECT_EQ(CAtlString(L""), handler.GetHost());
    handler.SetHost(CAtlString(L"other:1"));
    handler.GetProxy(host, port, user, password);
    EXPECT_EQ(CAtlString(L"other:1"), host);
    EXPECT_EQ(8080, port);
}

TEST(ProxyHandlerAuthenticate, CommandLineCredentialsAreTriedOnceThenTheDialogDecides)
{
    ProxyHandler handler;
    handler.SetCredentials(CAtlString(L"cli"), CAtlString(L"wrong"));
    ScriptedPrompt prompt;
    prompt.answer = {CAtlString(L"ignored"), 1, CAtlString(L"typed"), CAtlString(L"right")};
    handler.SetPrompt(prompt.Get());

    CAtlString user, password;
    EXPECT_TRUE(handler.Authenticate(CAtlString(L"proxy"), 3128, user, password));
    EXPECT_EQ(CAtlString(L"wrong"), password);
    // Dialogs are off: the second 407 fails.
    EXPECT_FALSE(handler.Authenticate(CAtlString(L"proxy"), 3128, user, password));
    EXPECT_TRUE(prompt.calls.empty());

    handler.SetAllowPrompt(true);
    EXPECT_TRUE(handler.Authenticate(CAtlString(L"proxy"), 3128, user, password));
    ASSERT_EQ(1u, prompt.calls.size());
    EXPECT_EQ(CAtlString(L"proxy"), prompt.calls[0].shown.host);
    EXPECT_EQ(CAtlString(L"cli"), prompt.calls[0].shown.user);
    EXPECT_FALSE(prompt.calls[0].hostEditable);
    EXPECT_EQ(CAtlString(L"right"), password);
    EXPECT_EQ(CAtlString(L"typed"), handler.GetUser());
    EXPECT_NE(CAtlString(L"ignored"), handler.GetHost());  // host and port are not taken over
}

TEST(ProxyHandlerAuthenticate, ARefusedDialogOrACancelStopsAllLaterDialogsUntilTheOptionsAreAccepted)
{
    ProxyHandler handler;
    ScriptedPrompt prompt;
    prompt.accept = false;
    handler.SetPrompt(prompt.Get());
    handler.SetAllowPrompt(true);
    CAtlString user, password;
    EXPECT_FALSE(handler.Authenticate(CAtlString(L"proxy"), 1, user, password));
    EXPECT_TRUE(handler.IsUserCancelled());
    prompt.accept = true;
    EXPECT_FALSE(handler.Authenticate(CAtlString(L"proxy"), 1, user, password));
    EXPECT_EQ(1u, prompt.calls.size());

    // The options dialog starts afresh, with everything editable.
    EXPECT_TRUE(handler.ConfigureDialog(nullptr));
    EXPECT_TRUE(prompt.calls.back().hostEditable);
    EXPECT_FALSE(handler.IsUserCancelled());

    handler.Cancelled();
    EXPECT_FALSE(handler.Authenticate(CAtlString(L"proxy"), 1, user, password));
    EXPECT_EQ(2u, prompt.calls.size());

    // No dialog at all counts as a refused one.
    ProxyHandler bare;
    bare.SetAllowPrompt(true);
    EXPECT_FALSE(bare.Authenticate(CAtlString(L"proxy"), 1, user, password));
    EXPECT_FALSE(bare.ConfigureDialog(nullptr));
}

TEST(ProxyHandlerAuthenticate, TheDialogOfAWorkerThreadsFetchOpensOnTheInterfaceThread)
{
    ProxyHandler handler;
    ScriptedPrompt prompt;
    prompt.answer.user = CAtlString(L"worker");
    handler.SetPrompt(prompt.Get());
    handler.SetAllowPrompt(true);
    CAtlString user, password;
    const int result = QThreadWithLoop::RunOnThread(
        [&] { return handler.Authenticate(CAtlString(L"proxy"), 1, user, password) ? 1 : 0; });
    EXPECT_EQ(1, result);
    ASSERT_EQ(1u, prompt.calls.size());
    EXPECT_TRUE(prompt.calls[0].onInterfaceThread);
    EXPECT_EQ(CAtlString(L"worker"), user);
}
