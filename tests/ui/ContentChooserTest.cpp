// The two trees of the content chooser on real QTreeWidgets, over category records that the engine
// reads from a copy of the bundled sample source with "Animals" and "Maps" installed and a newer
// "Animals" offered.

#include "ui/CCategoriesCheckboxController.h"
#include "ui/CContentChooserCheckBox.h"
#include "installation/CGalleryInstallation.h"
#include "ui/CUpdatesCheckboxController.h"
#include "ui/GalleryItemWrapper.h"
#include "ui/ITotalObserver.h"
#include "support/TestEnvironment.h"

#include <QTreeWidget>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <vector>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

// Ids as the main window gives them: 1 for each root, then one per category in list order.
enum { kRoot = 1, kAnimals = 2, kMaps = 3, kSounds = 4 };

struct TotalsRecorder : ITotalObserver {
    int calls = 0;
    void OnTotalsChanged() override { ++calls; }
};

struct ContentChooser : ::testing::Test {
    std::string source = MakeScratchDir("source");
    std::string gallery = MakeScratchDir("gallery");
    std::unique_ptr<CGalleryInstallation> installation;
    TotalsRecorder totals;
    CCategoriesCheckboxController categories{&totals};
    CUpdatesCheckboxController updates;
    QTreeWidget categoryTree;
    QTreeWidget updateTree;

    void SetUp() override
    {
        fs::copy(std::string(CURATOOL_SOURCE_DIR) + "/samples/source", source, fs::copy_options::recursive);
        Open();
        Category(kAnimals)->SetAction(1);
        Category(kMaps)->SetAction(1);
        ASSERT_EQ(S_OK, installation->Run());
        // The source moves on: one file of "Animals" gets a newer version.
        const std::string document = source + "/gallery_categories.xml";
        std::string text = ReadFile(document);
        const std::string old = "id=\"zsc.pkg.animals.birds\" version=\"1.0\"";
        const auto at = text.find(old);
        ASSERT_NE(std::string::npos, at);
        text.replace(at, old.size(), "id=\"zsc.pkg.animals.birds\" version=\"1.1\"");
        ASSERT_TRUE(WriteFile(document, text));
        Open();
        ASSERT_TRUE(Category(kAnimals)->IsUpdateAvailable());
        ASSERT_FALSE(Category(kMaps)->IsUpdateAvailable());
        ASSERT_FALSE(Category(kSounds)->IsInstalled());
    }

    void Open()
    {
        installation = CGalleryInstallation::Create();
        ASSERT_TRUE(installation);
        ASSERT_EQ(S_OK, installation->Open(CZoltaDirectoryPath(gallery.c_str()), CAtlString(source.c_str()), true));
        ASSERT_EQ(3, installation->CategoryCount());
    }

    CGalleryCategory* Category(int id) const { return installation->Category(id - 2); }

    void BuildTrees()
    {
        categories.Clear();
        updates.Clear();
        categoryTree.clear();
        updateTree.clear();
        categoryTree.setColumnCount(2);
        categories.SetCheckColumn(0);
        categories.SetSizeColumn(1);
        updates.SetCheckColumn(0);
        auto* categoryRoot = new QTreeWidgetItem(&categoryTree);
        categories.CreateBox(kRoot, 0, categoryRoot);
        auto* updateRoot = new QTreeWidgetItem(&updateTree);
        updates.CreateBox(kRoot, 0, updateRoot);
        for (int id = 2; id < 2 + installation->CategoryCount(); ++id) {
            auto wrapper = std::make_shared<GalleryItemWrapper>(Category(id));
            categories.CreateBox(id, kRoot, new QTreeWidgetItem(categoryRoot));
            categories.AddItem(id, wrapper);
            updates.CreateBox(id, kRoot, new QTreeWidgetItem(updateRoot));
            updates.AddItem(id, wrapper);
        }
        categoryRoot->setExpanded(true);
        updateRoot->setExpanded(true);
        categories.Recount();
    }

    void Click(CHeckBoxController& controller, const std::vector<int>& ids)
    {
        for (int id : ids)
            controller.Click(id);
    }

    std::vector<int> Actions() const
    {
        return {Category(kAnimals)->GetAction(), Category(kMaps)->GetAction(), Category(kSounds)->GetAction()};
    }

    QTreeWidgetItem* Row(CContentChooserCheckboxController& controller, int id) const
    {
        return controller.ChooserBox(id)->GetItem();
    }

    bool Shown(CContentChooserCheckboxController& controller, int id) const
    {
        const QTreeWidgetItem* row = Row(controller, id);
        return !row->isHidden() && row->flags().testFlag(Qt::ItemIsEnabled);
    }
};

}  // namespace

TEST_F(ContentChooser, RowsShowTitlesSizesAndWhatIsInstalled)
{
    BuildTrees();
    for (int id : {kAnimals, kMaps, kSounds}) {
        const QTreeWidgetItem* row = Row(categories, id);
        EXPECT_EQ(Category(id)->GetTitle().ToQString(), row->text(0));
        EXPECT_EQ(FormatByteSize(static_cast<unsigned>(Category(id)->GetDiskSize())).ToQString(), row->text(1));
        EXPECT_FALSE(row->flags().testFlag(Qt::ItemIsUserCheckable)) << "only the controller changes a mark";
        EXPECT_EQ(Category(id)->GetTitle().ToQString(), Row(updates, id)->text(0));
    }
    EXPECT_EQ(Qt::Checked, Row(categories, kAnimals)->checkState(0));
    EXPECT_EQ(Qt::Checked, Row(categories, kMaps)->checkState(0));
    EXPECT_EQ(Qt::Unchecked, Row(categories, kSounds)->checkState(0));
    EXPECT_EQ(Qt::PartiallyChecked, Row(categories, kRoot)->checkState(0));
    EXPECT_EQ(std::vector<int>({0, 0, 0}), Actions());
    // Only an installed category with something newer offers an update.
    EXPECT_TRUE(Shown(updates, kAnimals));
    EXPECT_FALSE(Shown(updates, kMaps));
    EXPECT_FALSE(Shown(updates, kSounds));
    EXPECT_EQ(Qt::Unchecked, Row(updates, kAnimals)->checkState(0));
}

TEST_F(ContentChooser, CategoryClicksSetTheEngineActions)
{
    struct Case {
        std::vector<int> clicks;
        std::vector<int> actions;
    };
    const Case cases[] = {
        {{kSounds}, {0, 0, 1}},       // checking an uninstalled category adds it
        {{kMaps}, {0, 4, 0}},         // clearing an installed one removes it
        {{kMaps, kMaps}, {0, 0, 0}},  // checked again: left alone, not added
        {{kSounds, kSounds}, {0, 0, 0}},
        {{kRoot}, {4, 4, 0}},                       // partial root -> cleared: all installed go
        {{kSounds, kRoot, kRoot}, {4, 4, 0}},       // checked root -> partial -> cleared
        {{kRoot, kRoot}, {0, 0, 1}},                // cleared -> checked: everything there
        {{kMaps, kRoot, kRoot, kRoot}, {0, 4, 0}},  // -> partial: each row's own choice comes back
    };
    for (const Case& test : cases) {
        for (int id : {kAnimals, kMaps, kSounds})
            Category(id)->SetAction(0);
        BuildTrees();
        Click(categories, test.clicks);
        EXPECT_EQ(test.actions, Actions()) << "after " << ::testing::PrintToString(test.clicks);
    }
}

TEST_F(ContentChooser, UpdateRowFollowsItsCategoryAcrossTheTrees)
{
    BuildTrees();
    updates.Click(kAnimals);
    EXPECT_EQ(3, Category(kAnimals)->GetAction());
    EXPECT_EQ(Qt::Checked, Row(categories, kAnimals)->checkState(0)) << "an update keeps the category";

    categories.Click(kAnimals);  // marked for removal: the update row goes
    EXPECT_EQ(4, Category(kAnimals)->GetAction());
    EXPECT_FALSE(Shown(updates, kAnimals));

    categories.Click(kAnimals);  // mark cleared: the row is back, unchecked
    EXPECT_EQ(0, Category(kAnimals)->GetAction());
    EXPECT_TRUE(Shown(updates, kAnimals));
    EXPECT_EQ(Qt::Unchecked, Row(updates, kAnimals)->checkState(0));

    updates.Click(kRoot);
    EXPECT_EQ(3, Category(kAnimals)->GetAction());
    categories.Click(kRoot);  // partial -> cleared: removal hides the update row again
    EXPECT_EQ(std::vector<int>({4, 4, 0}), Actions());
    EXPECT_FALSE(Shown(updates, kAnimals));
    categories.Click(kRoot);
    EXPECT_TRUE(Shown(updates, kAnimals));
}

TEST_F(ContentChooser, OfflineOnlyInstalledCategoriesCanChangeAndNoUpdateShows)
{
    BuildTrees();
    categories.Click(kSounds);
    updates.Click(kAnimals);
    // The connection is lost: the selection is dropped and both trees refreshed.
    for (int id : {kAnimals, kMaps, kSounds})
        Category(id)->SetAction(0);
    categories.SetOffline(true);
    updates.SetOffline(true);
    categories.RefreshAll();
    categories.Recount();
    updates.RefreshAll();

    EXPECT_FALSE(Row(categories, kSounds)->flags().testFlag(Qt::ItemIsEnabled));
    EXPECT_EQ(Qt::Unchecked, Row(categories, kSounds)->checkState(0));
    EXPECT_TRUE(Shown(categories, kMaps));
    for (int id : {kAnimals, kMaps, kSounds})
        EXPECT_FALSE(Shown(updates, id)) << id;
    // The disabled row does not count for the root, and never changes.
    EXPECT_EQ(Qt::Checked, Row(categories, kRoot)->checkState(0));
    categories.Click(kSounds);
    EXPECT_EQ(Qt::Unchecked, Row(categories, kSounds)->checkState(0));
    Click(categories, {kRoot, kRoot});
    EXPECT_EQ(std::vector<int>({4, 4, 0}), Actions());
    Click(categories, {kRoot});
    EXPECT_EQ(std::vector<int>({0, 0, 0}), Actions());
    EXPECT_EQ(Qt::Unchecked, Row(categories, kSounds)->checkState(0));
}

TEST_F(ContentChooser, TotalsFollowTheChosenCategories)
{
    BuildTrees();
    auto size = [&](int id) { return static_cast<unsigned>(Category(id)->GetDiskSize()); };
    auto count = [&](int id) { return static_cast<unsigned>(Category(id)->GetCount()); };
    EXPECT_EQ(size(kAnimals) + size(kMaps), categories.GetInstalledSize());
    EXPECT_EQ(count(kAnimals) + count(kMaps), categories.GetInstalledCount());

    struct Case {
        std::vector<int> clicks;
        unsigned addSize, addCount, removeSize, removeCount;
    };
    const Case cases[] = {
        {{kSounds}, size(kSounds), count(kSounds), 0, 0},
        {{kMaps}, size(kSounds), count(kSounds), size(kMaps), count(kMaps)},
        {{kSounds, kAnimals}, 0, 0, size(kMaps) + size(kAnimals), count(kMaps) + count(kAnimals)},
        {{kAnimals, kMaps}, 0, 0, 0, 0},
    };
    for (const Case& test : cases) {
        const int callsBefore = totals.calls;
        Click(categories, test.clicks);
        EXPECT_LT(callsBefore, totals.calls);
        EXPECT_EQ(test.addSize, categories.GetAddSize());
        EXPECT_EQ(test.addCount, categories.GetAddCount());
        EXPECT_EQ(test.removeSize, categories.GetRemoveSize());
        EXPECT_EQ(test.removeCount, categories.GetRemoveCount());
    }
    categories.ResetTotals();
    EXPECT_EQ(0u, categories.GetInstalledSize() + categories.GetInstalledCount() + categories.GetRemoveSize());
}
