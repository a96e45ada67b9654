// The widget-free check-box model: clicks, pushes from parents and recomputation of parents.

#include "CheckBoxController/CHeckBoxController.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

// A box that only remembers what it is told.
class MemoryBox : public CHeckBox {
public:
    using CHeckBox::CHeckBox;
    bool IsTriState() const override { return !GetChildren().empty(); }
    void SetText(const CAtlString&) override {}
    bool IsEnabled() const override { return m_enabled; }
    void SetEnabled(bool enabled) override { m_enabled = enabled; }
    bool IsVisible() const override { return true; }
    void SetVisible(bool) override {}

private:
    bool m_enabled = true;
};

class TreeController : public CHeckBoxController {
public:
    void Clear() override { m_boxes.clear(); }

    MemoryBox* Add(int id, int parentId = 0)
    {
        auto box = std::make_shared<MemoryBox>(id, this);
        if (CHeckBox* parent = GetBox(parentId))
            parent->AddChild(box.get());
        m_boxes[id] = box;
        return box.get();
    }

    int State(int id) const { return GetBox(id)->GetState(); }
    std::vector<int> States(std::initializer_list<int> ids) const
    {
        std::vector<int> states;
        for (int id : ids)
            states.push_back(State(id));
        return states;
    }
};

// 1 -> {2 -> {4, 5}, 3 -> {6, 7}}
struct ThreeLevels : ::testing::Test {
    TreeController tree;
    void SetUp() override
    {
        tree.Add(1);
        tree.Add(2, 1);
        tree.Add(3, 1);
        for (int leaf : {4, 5})
            tree.Add(leaf, 2);
        for (int leaf : {6, 7})
            tree.Add(leaf, 3);
    }
};

}  // namespace

TEST(CheckBoxToggleTest, LeavesAlternateAndParentsCycleThroughPartial)
{
    TreeController tree;
    tree.Add(1);
    tree.Add(2, 1);
    struct Case {
        int id;
        int expected;
    };
    const Case clicks[] = {{2, 1}, {2, 0}, {1, 1}, {1, 2}, {1, 0}, {1, 1}};
    for (const Case& click : clicks) {
        tree.Click(click.id);
        EXPECT_EQ(click.expected, tree.State(click.id)) << "box " << click.id;
    }
    tree.Click(99);  // unknown: nothing happens
    EXPECT_EQ(1, tree.State(1));
}

TEST_F(ThreeLevels, ARootClickPushesThroughEveryLevelAndKeepsEachOwnChoice)
{
    tree.Click(1);
    EXPECT_EQ(std::vector<int>({1, 1, 1, 1, 1, 1, 1}), tree.States({1, 2, 3, 4, 5, 6, 7}));
    for (int id : {2, 3, 4, 5, 6, 7}) {
        EXPECT_TRUE(tree.GetBox(id)->IsForced()) << id;
        EXPECT_EQ(0, tree.GetBox(id)->GetOwnState()) << id;
    }
    tree.Click(1);  // checked -> partial: nobody chose anything, so all come back clear
    EXPECT_EQ(std::vector<int>({2, 0, 0, 0, 0, 0, 0}), tree.States({1, 2, 3, 4, 5, 6, 7}));
    tree.Click(1);
    EXPECT_EQ(std::vector<int>({0, 0, 0, 0, 0, 0, 0}), tree.States({1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(ThreeLevels, AGrandchildClickRecomputesBothAncestorsAndAPartialRootRestoresOwnChoices)
{
    tree.Click(4);
    EXPECT_EQ(std::vector<int>({1, 2, 2}), tree.States({4, 2, 1}));
    tree.Click(5);
    EXPECT_EQ(std::vector<int>({1, 1, 2}), tree.States({5, 2, 1}));
    tree.Click(6);
    tree.Click(7);
    EXPECT_EQ(std::vector<int>({1, 1}), tree.States({3, 1}));

    // A partial parent gives each child back its own choice.
    tree.Click(5);
    EXPECT_EQ(std::vector<int>({2, 0, 1, 1, 1, 1, 2}), tree.States({1, 5, 3, 4, 6, 7, 2}));
    tree.Click(1);  // partial -> unchecked: everything forced clear
    EXPECT_EQ(std::vector<int>({0, 0, 0, 0, 0, 0, 0}), tree.States({1, 2, 3, 4, 5, 6, 7}));
    tree.Click(1);  // -> checked
    EXPECT_EQ(std::vector<int>({1, 1, 1, 1, 1, 1, 1}), tree.States({1, 2, 3, 4, 5, 6, 7}));
    tree.Click(1);  // -> partial: the user's own marks come back, the root stays partial
    EXPECT_EQ(std::vector<int>({2, 1, 0, 1, 1}), tree.States({1, 4, 5, 6, 7}));
    EXPECT_EQ(2, tree.State(2));
    EXPECT_EQ(1, tree.State(3));
}

TEST(CheckBoxForceTest, AForcedBoxShowsThePushUntilUnforcedAndThenItsOwnChoice)
{
    TreeController tree;
    CHeckBox* box = tree.Add(1);
    box->ChangeState(1);
    box->Force(0);
    box->Force(2);
    EXPECT_EQ(2, box->GetState());
    EXPECT_EQ(1, box->GetOwnState());
    box->Unforce();
    EXPECT_FALSE(box->IsForced());
    EXPECT_EQ(1, box->GetState());
    box->SetOwnState(0);
    box->Unforce();  // not forced: nothing to undo
    EXPECT_EQ(0, box->GetState());
}

TEST(CheckBoxUpdateParentsTest, TieBreaks)
{
    struct Child {
        int state;
        bool enabled;
    };
    struct Case {
        std::vector<Child> children;
        int parentState;
        bool parentEnabled;
    };
    const Case cases[] = {
        {{{1, true}, {1, true}}, 1, true},
        {{{0, true}, {0, true}}, 0, true},
        {{{1, true}, {0, true}}, 2, true},
        {{{0, true}, {1, true}}, 2, true},
        {{{0, true}, {2, true}}, 0, true},  // a later partial counts as unchecked
        {{{1, true}, {2, true}}, 2, true},
        {{{2, true}, {0, true}}, 2, true},  // a partial first child makes partial
        {{{2, true}, {1, true}}, 2, true},
        {{{1, true}, {0, false}}, 1, true},  // disabled children do not count
        {{{0, false}, {1, true}, {1, true}}, 1, true},
        {{{1, false}, {1, false}}, 0, false},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        TreeController tree;
        tree.Add(1, 0);
        CHeckBox* root = tree.Add(2, 1);
        int id = 3;
        for (const Child& wanted : cases[i].children) {
            MemoryBox* child = tree.Add(id++, 2);
            child->SetOwnState(wanted.state);
            child->SetEnabled(wanted.enabled);
        }
        tree.UpdateParents(root);
        EXPECT_EQ(cases[i].parentState, root->GetState()) << "case " << i;
        EXPECT_EQ(cases[i].parentEnabled, root->IsEnabled()) << "case " << i;
        EXPECT_EQ(cases[i].parentEnabled, tree.GetBox(1)->IsEnabled()) << "case " << i;
    }
}
