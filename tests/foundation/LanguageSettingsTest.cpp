#include "foundation/CSettingsStore.h"
#include "foundation/CZOLTALanguageSettingsCache.h"
#include "foundation/LanguageSettings.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTranslator>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using curatool::test::MakeScratchDir;
using curatool::test::U;
using curatool::test::WriteFile;

const CAtlString kLanguageSection(L"Software\\ZOLTA Technologies Inc.\\Language");

std::string Home()
{
    return std::getenv("HOME");
}

std::string KdeGlobals()
{
    return Home() + "/.kde/share/config/kdeglobals";
}

// A child process (re-executed by the death-test machinery) reports through its exit code; it
// clears its own scratch tree first, since it never returns to the test main.
[[noreturn]] void ExitWith(bool passed)
{
    std::error_code ignored;
    std::filesystem::remove_all(curatool::test::ScratchRoot(), ignored);
    _exit(passed ? 0 : 1);
}

class LanguageSettingsTest : public testing::Test {
protected:
    void SetUp() override
    {
        unsetenv("KDE_FULL_SESSION");
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
            const char* value = std::getenv(name);
            saved.emplace_back(name, value ? std::optional<std::string>(value) : std::nullopt);
        }
    }
    void TearDown() override
    {
        unsetenv("KDE_FULL_SESSION");
        std::filesystem::remove(KdeGlobals());
        CSettingsStore::DeleteSection(true, kLanguageSection);
        CZOLTALanguageSettingsCache::DestroyInstance();
        for (const auto& [name, value] : saved) {
            if (value)
                setenv(name.c_str(), value->c_str(), 1);
            else
                unsetenv(name.c_str());
        }
    }
    static void StoreLanguage(const wchar_t* language)
    {
        ASSERT_EQ(0, CSettingsStore::WriteString(true, kLanguageSection, L"LanguageID", language,
                                                 L"com.zoltaworks.Registry"));
    }
    static void StartKdeSession(const std::string& languages)
    {
        ASSERT_TRUE(WriteFile(KdeGlobals(), "[General]\nwidgetStyle=Breeze\n\n[Locale]\nLanguage=" + languages + "\n"));
        setenv("KDE_FULL_SESSION", "true", 1);
    }
    // The system locale is read once per process, so a locale is tried in a fresh child.
    static void WithLocale(const char* locale)
    {
        setenv("LC_ALL", locale, 1);
        unsetenv("LC_MESSAGES");
    }
    static std::string LanguageCode()
    {
        return U(CZOLTALanguageSettingsCache::GetInstance(CAtlString())->GetLanguageCode());
    }

    std::vector<std::pair<std::string, std::optional<std::string>>> saved;
};

TEST(LanguageOfLocale, OnlyEnglishPortugueseChineseAndHindiKeepTheirRegion)
{
    // "eng_XX": only the first part counts, and "eng" is not English.
    for (const auto& [locale, language] : std::vector<std::pair<const char*, const char*>>{{"C", "en_CA"},
                                                                                           {"fr_CA", "fr"},
                                                                                           {"pt_BR", "pt_BR"},
                                                                                           {"zh_TW", "zh_TW"},
                                                                                           {"hi_IN", "hi_IN"},
                                                                                           {"en_US", "en_US"},
                                                                                           {"es", "es"},
                                                                                           {"eng_XX", "eng"}})
        EXPECT_EQ(language, LanguageOfLocaleName(locale).toStdString()) << locale;
}

TEST_F(LanguageSettingsTest, AmericanEnglishBecomesCanadianOnlyThroughTheLanguageCode)
{
    WithLocale("en_US.UTF-8");
    EXPECT_EXIT(ExitWith(GetSystemLanguage() == "en_US" && LanguageCode() == "en_CA" &&
                         GetUILanguage(true) == "en_CA" && GetUILanguage(false) == "en_US"),
                testing::ExitedWithCode(0), "");
}

TEST_F(LanguageSettingsTest, KdeSessionGivesTheFirstOfItsLanguagesAndAStoredLanguageWinsOverIt)
{
    StartKdeSession("de:en_US");
    EXPECT_EQ("de", LanguageCode());
    EXPECT_FALSE(CZOLTALanguageSettingsCache::GetInstance(CAtlString())->IsLanguageSet());
    StartKdeSession("en_US");
    EXPECT_EQ("en_CA", LanguageCode());

    StartKdeSession("fr:en_US");
    StoreLanguage(L"de");
    EXPECT_EQ("de", LanguageCode());
    EXPECT_TRUE(CZOLTALanguageSettingsCache::GetInstance(CAtlString())->IsLanguageSet());
    StoreLanguage(L"en_US");
    EXPECT_EQ("en_CA", LanguageCode());
}

TEST_F(LanguageSettingsTest, KdeIsAskedOnlyInAKdeSessionThroughHomeAndEmptinessFallsThrough)
{
    StartKdeSession("de:en_US");
    unsetenv("KDE_FULL_SESSION");
    EXPECT_EQ("", GetKdeSessionLanguage().toStdString());
    const std::string system = GetSystemLanguage() == "en_US" ? "en_CA" : GetSystemLanguage().toStdString();
    EXPECT_EQ(system, LanguageCode());

    setenv("KDE_FULL_SESSION", "true", 1);
    ASSERT_TRUE(WriteFile(KdeGlobals(), "[Locale]\nCountry=de\n"));
    EXPECT_EQ(system, LanguageCode());
    StoreLanguage(L"");  // an empty stored value counts as none
    EXPECT_EQ(system, LanguageCode());

    // The file is found through HOME.
    StartKdeSession("it");
    const std::string home = Home();
    setenv("HOME", MakeScratchDir("other-home").c_str(), 1);
    EXPECT_EQ("", GetKdeSessionLanguage().toStdString());
    setenv("HOME", home.c_str(), 1);
    EXPECT_EQ("it", GetKdeSessionLanguage().toStdString());
}

TEST_F(LanguageSettingsTest, TheCacheIsOneInstancePerApplicationKey)
{
    CZOLTALanguageSettingsCache* scrivent = CZOLTALanguageSettingsCache::GetInstance(L"Scrivent");
    EXPECT_EQ(scrivent, CZOLTALanguageSettingsCache::GetInstance(CAtlString()));
    EXPECT_EQ("Software\\ZOLTA Technologies Inc.\\ZOLTA Tavolite Software\\Language",
              U(scrivent->GetLanguageKey(L"TavoliteSW")));

    CZOLTALanguageSettingsCache* tavolite = CZOLTALanguageSettingsCache::GetInstance(L"TavoliteSW");
    EXPECT_NE(scrivent, tavolite);
    EXPECT_EQ(tavolite, CZOLTALanguageSettingsCache::GetInstance(CAtlString()));
    // The former instance is still alive for whoever holds it.
    EXPECT_EQ("Scrivent", U(scrivent->GetApplication()));
    EXPECT_EQ("Software\\ZOLTA Technologies Inc.\\ZOLTA Scrivent\\Language", U(scrivent->GetLanguageKey(L"Scrivent")));
    delete scrivent;
}

TEST_F(LanguageSettingsTest, AskingForTheUiLanguageDropsTheCache)
{
    CZOLTALanguageSettingsCache::GetInstance(L"Scrivent");
    StoreLanguage(L"nl");
    EXPECT_EQ("nl", GetUILanguage(true).toStdString());
    // A new instance is made for the empty key: the one for "Scrivent" is gone.
    EXPECT_EQ("", U(CZOLTALanguageSettingsCache::GetInstance(CAtlString())->GetApplication()));
}

TEST_F(LanguageSettingsTest, CatalogueComesFromTheLanguagesFolderAndIsOptionalForEnglishOnly)
{
    const std::string directory = MakeScratchDir("application");
    const QString folder = QString::fromStdString(directory);
    StoreLanguage(L"en_GB");
    EXPECT_TRUE(LoadCatalogue(folder, "CuratoolId", true));
    StoreLanguage(L"de");
    EXPECT_FALSE(LoadCatalogue(folder, "CuratoolId", true));

    // The smallest catalogue the translator accepts: its magic number and nothing else.
    const std::string magic = "\x3C\xB8\x64\x18\xCA\xEF\x9C\x95\xCD\x21\x1C\xBF\x60\xA1\xBD\xDD";
    ASSERT_TRUE(WriteFile(directory + "/Languages/de/CuratoolId.qm", magic));
    EXPECT_TRUE(LoadCatalogue(folder, "CuratoolId", true));
    EXPECT_FALSE(LoadCatalogue(folder, "OtherName", true));
}

}  // namespace
