// The two Qt bindings of the check-box model, driven through their widgets' own signals.

#include "CheckBoxController/CHeckBoxController.h"
#include "ui/CQtCheckBox.h"
#include "ui/CQtTreeCheckBox.h"

#include <QCheckBox>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

struct Controller : CHeckBoxController {
    void Clear() override {}
};

}  // namespace

TEST(QtCheckBoxBindingTest, WidgetClicksFollowTheModelsCycleNotTheWidgets)
{
    Controller controller;
    QCheckBox parentWidget, childWidget;
    parentWidget.setTristate(true);
    CQtCheckBox parent(1, &controller, &parentWidget);
    CQtCheckBox child(2, &controller, &childWidget);
    parent.AddChild(&child);

    childWidget.click();
    EXPECT_EQ(Qt::Checked, childWidget.checkState());
    EXPECT_EQ(Qt::Checked, parentWidget.checkState());
    parentWidget.click();  // a tri-state QCheckBox would go to unchecked; the model goes to partial
    EXPECT_EQ(Qt::PartiallyChecked, parentWidget.checkState());
    EXPECT_EQ(Qt::Checked, childWidget.checkState());
    parentWidget.click();
    EXPECT_EQ(Qt::Unchecked, parentWidget.checkState());
    EXPECT_EQ(Qt::Unchecked, childWidget.checkState());
}

TEST(QtCheckBoxBindingTest, TreeRowShowsItsStateAndADisabledRowIgnoresClicks)
{
    Controller controller;
    QTreeWidget tree;
    auto* item = new QTreeWidgetItem(&tree);
    CQtTreeCheckBox box(1, &controller);
    box.SetItem(item, 0);
    box.SetTriState(true);
    const Qt::CheckState expected[] = {Qt::Checked, Qt::PartiallyChecked, Qt::Unchecked};
    for (Qt::CheckState state : expected) {
        box.OnClicked(false);
        EXPECT_EQ(state, item->checkState(0));
    }
    box.SetEnabled(false);
    box.OnClicked(false);
    EXPECT_EQ(Qt::Unchecked, item->checkState(0));
    EXPECT_EQ(0, box.GetOwnState());
    box.SetVisible(false);
    EXPECT_TRUE(item->isHidden());
    EXPECT_FALSE(box.IsVisible());
}
