#include "foundation/CSettingsStore.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QSettings>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using curatool::test::Exists;
using curatool::test::MakeScratchDir;
using curatool::test::ReadFile;
using curatool::test::U;
using curatool::test::WriteFile;

const bool kUser = true;
const bool kSystem = false;
const CAtlString kStore(L"com.zoltaworks.Registry");

std::string UserStoreFile()
{
    return std::string(std::getenv("XDG_CONFIG_HOME")) + "/" + CSettingsStore::OrganizationName().toStdString() + "/" +
           CSettingsStore::ApplicationName().toStdString() + ".conf";
}

// Every case works below its own section and leaves the store as it found it.
class SettingsStoreTest : public testing::Test {
protected:
    void SetUp() override
    {
        section = QStringLiteral("Software\\ZOLTA Technologies Inc.\\Test\\%1")
                      .arg(QString::fromUtf8(testing::UnitTest::GetInstance()->current_test_info()->name()));
        savedRoot = std::getenv("CURATOOL_ROOT");
    }
    void TearDown() override
    {
        setenv("CURATOOL_ROOT", savedRoot.c_str(), 1);
        CSettingsStore::DeleteSection(kUser, section, kStore);
        CSettingsStore::DeleteSection(kSystem, section, kStore);
    }
    // A root whose etc/xdg is a file: not even root can make the machine-wide store there.
    void UseUnwritableSystemFolder()
    {
        const std::string root = MakeScratchDir("blocked-root");
        ASSERT_TRUE(WriteFile(root + "/etc/xdg", "not a folder"));
        setenv("CURATOOL_ROOT", root.c_str(), 1);
    }

    CAtlString section;
    std::string savedRoot;
};

TEST(SettingsStorePaths, SectionsAreMappedToSlashedGroupsWithoutOuterSlashes)
{
    EXPECT_EQ("Software/ZOLTA Technologies Inc./Gallery/TeamContent/{G}",
              CSettingsStore::MapSection("Software\\ZOLTA Technologies Inc.\\Gallery\\TeamContent\\{G}").toStdString());
    EXPECT_EQ("a/b", CSettingsStore::MapSection("\\\\a\\b\\/").toStdString());
    EXPECT_EQ("a/b/Key", CSettingsStore::MapKey("/a/b/", "Key").toStdString());
}

TEST_F(SettingsStoreTest, AbsentOrUnreadableValuesGiveTheDefaultAndStatusTwo)
{
    int status = -1;
    EXPECT_EQ("fallback", U(CSettingsStore::ReadString(kUser, section, L"Missing", L"fallback", &status)));
    EXPECT_EQ(2, status);
    ASSERT_EQ(0, CSettingsStore::WriteString(kUser, section, L"Text", L"not a number"));
    EXPECT_EQ(7, CSettingsStore::ReadInt(kUser, section, L"Text", 7, &status));
    EXPECT_EQ(2, status);
    // An empty value is present, not absent.
    ASSERT_EQ(0, CSettingsStore::WriteString(kUser, section, L"Blank", L""));
    EXPECT_EQ("", U(CSettingsStore::ReadString(kUser, section, L"Blank", L"fallback", &status)));
    EXPECT_EQ(0, status);
}

TEST_F(SettingsStoreTest, ValuesRoundTripUnderEitherSeparatorWithNonAsciiTextAndNegativeNumbers)
{
    const CAtlString slashed = section.ToQString().replace('\\', '/') + "/";
    const CAtlString text(QString::fromUtf8("C:/Galerías/日本語 – ü\\x"));
    ASSERT_EQ(0, CSettingsStore::WriteString(kUser, section, L"AppPath", text, kStore));
    ASSERT_EQ(0, CSettingsStore::WriteInt(kUser, slashed, L"Number", -12345, kStore));
    int status = -1;
    EXPECT_EQ(text.ToQString(),
              CSettingsStore::ReadString(kUser, slashed, L"AppPath", L"", &status, kStore).ToQString());
    EXPECT_EQ(0, status);
    EXPECT_EQ(-12345, CSettingsStore::ReadInt(kUser, section, L"Number", 0, &status, kStore));
    EXPECT_EQ(0, status);
    // Written through to the user's own file at once.
    QSettings direct(QString::fromStdString(UserStoreFile()), QSettings::NativeFormat);
    EXPECT_EQ(text.ToQString(), direct.value(CSettingsStore::MapKey(section.ToQString(), "AppPath")).toString());
}

TEST_F(SettingsStoreTest, ListSectionNamesChildSectionsAndValuesAndDeleteSectionTakesThemAll)
{
    ASSERT_EQ(0, CSettingsStore::WriteString(kUser, section + L"\\{GUID-1}", L"ImsManifestXml", L"a"));
    ASSERT_EQ(0, CSettingsStore::WriteString(kUser, section + L"\\{GUID-2}\\Deeper", L"X", L"b"));
    ASSERT_EQ(0, CSettingsStore::WriteInt(kUser, section, L"count", 2));

    std::vector<CAtlString> names{CAtlString(L"kept")};
    EXPECT_EQ(0, CSettingsStore::ListSection(kUser, section, names));
    std::vector<std::string> texts;
    for (const CAtlString& name : names)
        texts.push_back(U(name));
    std::sort(texts.begin() + 1, texts.end());
    EXPECT_EQ((std::vector<std::string>{"kept", "count", "{GUID-1}", "{GUID-2}"}), texts);

    EXPECT_EQ(2, CSettingsStore::ListSection(kUser, section + L"\\Nothing", names));

    // A section whose name merely starts the same is another section.
    ASSERT_EQ(0, CSettingsStore::WriteString(kUser, section + L"Sibling", L"C", L"3"));
    EXPECT_EQ(0, CSettingsStore::DeleteSection(kUser, section));
    int status = 0;
    CSettingsStore::ReadString(kUser, section + L"\\{GUID-2}\\Deeper", L"X", L"", &status);
    EXPECT_EQ(2, status);
    EXPECT_EQ("3", U(CSettingsStore::ReadString(kUser, section + L"Sibling", L"C", L"")));
    CSettingsStore::DeleteSection(kUser, section + L"Sibling");
}

TEST_F(SettingsStoreTest, StringArraysUseCountAndDecimalIndicesAndReadingSkipsGaps)
{
    QStringList read;
    const QStringList arguments = {"--installsome", "-configuration", QString::fromUtf8("/médias/Ünïcode dir"), "",
                                   "-verbose"};
    ASSERT_EQ(0, CSettingsStore::WriteStringArray(kUser, section, arguments, kStore));
    EXPECT_EQ(5, CSettingsStore::ReadInt(kUser, section, L"count", 0));
    EXPECT_EQ("-verbose", U(CSettingsStore::ReadString(kUser, section, L"4", L"")));

    EXPECT_EQ(0, CSettingsStore::ReadStringArray(kUser, section, read, kStore));
    EXPECT_EQ(arguments, read);

    // A shorter list replaces the longer one completely, so "1" is gone below.
    ASSERT_EQ(0, CSettingsStore::WriteStringArray(kUser, section, {"only"}, kStore));

    // A gap in the numbering gives 2, and the other entries are still read.
    ASSERT_EQ(0, CSettingsStore::WriteInt(kUser, section, L"count", 3));
    ASSERT_EQ(0, CSettingsStore::WriteString(kUser, section, L"0", L"first"));
    ASSERT_EQ(0, CSettingsStore::WriteString(kUser, section, L"2", L"third"));
    read.clear();
    EXPECT_EQ(2, CSettingsStore::ReadStringArray(kUser, section, read));
    EXPECT_EQ(QStringList({"first", "third"}), read);
}

TEST_F(SettingsStoreTest, SystemScopeLandsBelowTheRootsEtcXdg)
{
    const std::string expected = savedRoot + "/etc/xdg/" + CSettingsStore::OrganizationName().toStdString() + "/" +
                                 CSettingsStore::ApplicationName().toStdString() + ".conf";
    EXPECT_EQ(expected, CSettingsStore::SystemStoreFileName().toStdString());
    EXPECT_TRUE(CSettingsStore::IsSystemStoreWritable());

    ASSERT_EQ(0, CSettingsStore::WriteString(kSystem, section, L"Machine", L"wide"));
    EXPECT_NE(std::string::npos, ReadFile(expected).find("Machine=wide"));
    EXPECT_EQ(std::string::npos, ReadFile(UserStoreFile()).find("Machine=wide"));
    // The user's view includes machine-wide values it does not override.
    EXPECT_EQ("wide", U(CSettingsStore::ReadString(kUser, section, L"Machine", L"")));
    ASSERT_EQ(0, CSettingsStore::WriteString(kUser, section, L"Machine", L"mine"));
    EXPECT_EQ("mine", U(CSettingsStore::ReadString(kUser, section, L"Machine", L"")));
    EXPECT_EQ("wide", U(CSettingsStore::ReadString(kSystem, section, L"Machine", L"")));
}

TEST_F(SettingsStoreTest, WritabilityTestLeavesNoFileAndUnwritableSystemScopeFallsBackToTheUsersStore)
{
    const std::string fresh = MakeScratchDir("fresh-root");
    setenv("CURATOOL_ROOT", fresh.c_str(), 1);
    EXPECT_TRUE(CSettingsStore::IsSystemStoreWritable());
    EXPECT_FALSE(Exists(CSettingsStore::SystemStoreFileName().toStdString()));

    UseUnwritableSystemFolder();
    EXPECT_FALSE(CSettingsStore::IsSystemStoreWritable());

    EXPECT_EQ(0, CSettingsStore::WriteString(kSystem, section, L"Fallen", L"through"));
    EXPECT_NE(std::string::npos, ReadFile(UserStoreFile()).find("Fallen=through"));
    EXPECT_EQ("through", U(CSettingsStore::ReadString(kSystem, section, L"Fallen", L"")));
    std::vector<CAtlString> names;
    EXPECT_EQ(0, CSettingsStore::ListSection(kSystem, section, names));
    EXPECT_EQ(1u, names.size());
    EXPECT_EQ(0, CSettingsStore::DeleteSection(kSystem, section));
    EXPECT_EQ(std::string::npos, ReadFile(UserStoreFile()).find("Fallen=through"));
}

// A writer killed before it filled in its lock leaves an empty one: the next write does not wait
// the 30 s Qt gives such a lock.
TEST_F(SettingsStoreTest, AnEmptyLockLeftByAKilledWriterDoesNotHoldTheNextWrite)
{
    ASSERT_EQ(0, CSettingsStore::WriteString(kUser, section, L"Before", L"kill"));
    const QString lock = QString::fromStdString(UserStoreFile()) + QStringLiteral(".lock");
    QFile empty(lock);
    ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
    ASSERT_TRUE(empty.setFileTime(QDateTime::currentDateTime().addSecs(-10), QFileDevice::FileModificationTime));
    empty.close();
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(0, CSettingsStore::WriteString(kUser, section, L"After", L"kill"));
    EXPECT_LT(clock.elapsed(), 10000);
    EXPECT_EQ("kill", U(CSettingsStore::ReadString(kUser, section, L"After", L"")));
}

}  // namespace
