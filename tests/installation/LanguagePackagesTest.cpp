#include "installation/CGalleryInstallation.h"
#include "gallery/CGalleryInstalledManifest.h"
#include "support/GallerySourceBuilder.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <algorithm>

using namespace curatool::test;

namespace {

// A category read from one element, with the file "pkg.a" installed with `installedStrings`.
struct PackagesFixture : ::testing::Test {
    std::string gallery = MakeScratchDir("gallery");
    CGalleryInstalledRecords records;

    void Install(const std::vector<std::pair<std::string, std::string>>& installedStrings)
    {
        WriteInstallRecord(gallery, {"pkg.a", "1.0", "a.png", "x", "A", "", installedStrings});
        auto record = std::make_shared<CGalleryInstalledManifest>();
        ASSERT_EQ(S_OK, record->Load(CAtlString(InstallRecordPath(gallery, "pkg.a").c_str())));
        records[record->GetId()] = record;
    }

    std::vector<std::string> Packages(const std::string& fileStrings, bool updatesOnly)
    {
        const std::string xml = CategoriesXml({{"cat",
                                                "1.0",
                                                {{"en", "C"}},
                                                {{"a.zip", "pkg.a", "1.0", fileStrings}},
                                                {{"en", "en.zip"}, {"fr", "fr.zip"}, {"pt_BR", "ptbr.zip"}},
                                                ""}});
        tinyxml2::XMLDocument document;
        EXPECT_EQ(tinyxml2::XML_SUCCESS, document.Parse(xml.c_str()));
        CGalleryCategory category;
        EXPECT_EQ(S_OK, category.Read(*document.RootElement()->FirstChildElement("categories")->FirstChildElement(),
                                      records));
        std::vector<std::string> names;
        for (const CAtlString& name : ListLanguagePackages(category, updatesOnly))
            names.push_back(name.ToQString().toStdString());
        return names;
    }
};

std::vector<std::string> Sorted(std::vector<std::string> names)
{
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

TEST_F(PackagesFixture, UpdatesOnlySkipsLanguagesInstalledAtAHigherVersion)
{
    Install({{"fr", "2.0"}, {"en", "1.0"}});
    // fr is ahead; en is only equal, and equal is not ahead.
    EXPECT_EQ((std::vector<std::string>{"en.zip"}), Packages("en:1.0;fr:1.5", true));
    // A region of an installed language matches it at level 2.
    EXPECT_EQ((std::vector<std::string>{"en.zip"}), Packages("fr_CA:1.5;en:1.0", true));
}

TEST_F(PackagesFixture, AllLanguagesWithoutUpdatesOnlyElseRegionsFoldAndUnknownLanguagesGo)
{
    EXPECT_EQ((std::vector<std::string>{"en.zip", "fr.zip", "ptbr.zip"}), Sorted(Packages("", false)));
    EXPECT_EQ((std::vector<std::string>{"en.zip"}), Packages("en_GB:1.0;en:1.0", true));
    EXPECT_EQ((std::vector<std::string>{"ptbr.zip"}), Packages("pt:1.0", true));
    EXPECT_TRUE(Packages("de:1.0", true).empty());
}
