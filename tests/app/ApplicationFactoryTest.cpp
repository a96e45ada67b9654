#include "app/CApplicationFactory.h"
#include "configuration/CConfiguration.h"
#include "app/CWorkFlow.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <QApplication>
#include <QDir>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace {

using curatool::test::W;

std::string UsageText()
{
    std::ifstream in(CURATOOL_SOURCE_DIR "/tests/e2e/data/usage.txt", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

struct Factory : testing::Test {
    CApplicationFactory factory;

    void Parse(const QString& line) { ParseInto(factory, line); }

    // The tokens are given as one text, split at '|'.
    static void ParseInto(CApplicationFactory& into, const QString& line)
    {
        std::vector<QByteArray> tokens;
        for (const QString& token : line.split('|'))
            tokens.push_back(token.toUtf8());
        std::vector<char*> argv{const_cast<char*>("/opt/curatool/curatool")};
        for (QByteArray& token : tokens)
            argv.push_back(token.data());
        into.ParseCommandLine(static_cast<int>(argv.size()), argv.data());
    }

    // Runs the bound work flow; returns its code and what it printed.
    int RunCapturing(std::string& out, std::string& err)
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int code = factory.Run();
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
        return code;
    }
};

TEST_F(Factory, EveryOptionFillsItsFieldAndTheRawArgumentsAreKeptAsGiven)
{
    Parse(QStringLiteral("-locale|de|-proxy|p:1|-username|u|-password|pw|-source|/media/Disc Ü|-destination|d|-c|a1|"
                         "-c|a2|-c|a1|x|-remote|--allowdownload|\\verbose|-authorized|-overrideproxy"));
    const CCmdLineContext& c = factory.Context();
    EXPECT_EQ(W(L"de"), c.locale);
    EXPECT_EQ(W(L"p:1"), c.proxy);
    EXPECT_EQ(W(L"u"), c.username);
    EXPECT_EQ(W(L"pw"), c.password);
    EXPECT_EQ(QStringLiteral("/media/Disc Ü"), c.source.ToQString());
    EXPECT_EQ(W(L"d"), c.destination);
    EXPECT_EQ(3u, c.categoryAliases.size());
    EXPECT_EQ(1u, c.defaultParams.size());
    EXPECT_TRUE(c.remote && c.allowDownload && c.verbose && c.authorized && c.overrideProxy);
    EXPECT_TRUE(c.errors.empty());
    EXPECT_EQ(24, c.rawArguments.size());
    EXPECT_EQ(QStringLiteral("/media/Disc Ü"), c.rawArguments[9]);
    EXPECT_EQ(QStringLiteral("\\verbose"), c.rawArguments[21]);
    EXPECT_TRUE(factory.WantsElevation());
    EXPECT_FALSE(factory.NeedsElevation()) << "-authorized: already relaunched";
}

TEST_F(Factory, CommandLineActionsDropPrivilegesWindowBasedOnesKeepThem)
{
    const QStringList elevating{"--uninstallall", "--waitforcd", "--justupdated"};
    for (const QString& action : QStringLiteral("--uninstall|--installall|--installsome|--register|--downloadall|"
                                                "--downloadsome|-h|-?|--help|--uninstallall|--waitforcd|--justupdated")
                                     .split('|'))
    {
        CApplicationFactory f;
        ParseInto(f, action);
        EXPECT_EQ(elevating.contains(action), f.NeedsElevation()) << action.toStdString();
        EXPECT_TRUE(elevating.contains(action) || !f.WantsElevation()) << action.toStdString();
    }
}

TEST_F(Factory, ConfigurationPathIsMadeAbsoluteAndAMissingOneFailsQuietly)
{
    const std::string dir = curatool::test::MakeScratchDir("factory-cwd");
    const QString previous = QDir::currentPath();
    QDir::setCurrent(QString::fromStdString(dir));
    Parse("-configuration|no-such-collection");
    QDir::setCurrent(previous);

    EXPECT_EQ(QString::fromStdString(dir) + "/no-such-collection", factory.Context().configurationPath.ToQString());
    EXPECT_TRUE(factory.Context().errors.empty()) << "a failed load records no message";
    EXPECT_FALSE(factory.LoadConfigurationPath(W(L"/no/such/place")));
}

TEST_F(Factory, LoadedCollectionAddsItsStyleSheetToTheDefault)
{
    const std::string dir = curatool::test::MakeScratchDir("collection");
    for (const char* name : {"configuration.xml", "metadata.xml", "about.html", "splash.html", "logo.png"})
        curatool::test::WriteFile(
            dir + "/" + name, curatool::test::ReadFile(std::string(CURATOOL_SOURCE_DIR "/samples/collection/") + name));
    curatool::test::WriteFile(dir + "/style.qss", "QPushButton {color: red}");

    factory.ApplyStyleSheet(nullptr);  // without an application there is nothing to style
    factory.InstallTranslator(nullptr);
    Parse(QString::fromStdString("-configuration|" + dir));
    ASSERT_TRUE(factory.Configuration()->IsLoaded());
    EXPECT_EQ(CApplicationFactory::DEFAULT_STYLE_SHEET + "QPushButton {color: red}", factory.StyleSheet());
    EXPECT_EQ(factory.StyleSheet(), qApp->styleSheet()) << "applied at once";
    qApp->setStyleSheet(QString());
}

TEST_F(Factory, JustUpdatedParsesTheStoredArgumentsOnce)
{
    ASSERT_TRUE(CWorkFlow::StoreArguments({"-verbose", "--help"}));
    Parse("--justupdated");
    EXPECT_TRUE(factory.NeedsElevation());

    std::string out, err;
    EXPECT_EQ(666, RunCapturing(out, err)) << "the stored --help chose the work flow";
    EXPECT_EQ(UsageText(), out);
    EXPECT_TRUE(factory.Context().verbose);
    EXPECT_EQ((QStringList{"-verbose", "--help"}), factory.Context().rawArguments);

    QStringList again;
    EXPECT_TRUE(CWorkFlow::LoadArguments(again));
    EXPECT_TRUE(again.isEmpty()) << "the hand-over serves one start";
}

}  // namespace
