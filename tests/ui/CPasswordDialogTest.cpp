#include "ui/CPasswordDialog.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <gtest/gtest.h>

namespace {

template <typename T>
T* Child(QWidget& dialog, const char* name)
{
    T* child = dialog.findChild<T*>(name);
    EXPECT_NE(nullptr, child) << name;
    return child;
}

// Given texts replace the standard ones only when not empty; a given user name is read-only.
TEST(CPasswordDialog, TextsLayoutAndTheGivenOnesInPlaceOfTheStandard)
{
    struct Case {
        QString user, title, userLabel;
        bool readOnly;
    };
    for (const Case& c : {Case{"", "Authentication", "User Name:", false}, Case{"carol", "Proxy", "Login:", true}}) {
        QString user = c.user, password = "start";
        CPasswordDialog dialog(nullptr, user, password, c.readOnly, c.readOnly ? "Proxy" : QString(), QString(),
                               c.readOnly ? "Login:" : QString(), QString());
        EXPECT_EQ(c.title, dialog.windowTitle());
        EXPECT_EQ(QStringLiteral("Type your user name and password."), Child<QLabel>(dialog, "labelPrompt")->text());
        EXPECT_EQ(c.userLabel, Child<QLabel>(dialog, "labelUser")->text());
        EXPECT_EQ(QStringLiteral("Password:"), Child<QLabel>(dialog, "labelPassword")->text());
        EXPECT_EQ(QLineEdit::Password, Child<QLineEdit>(dialog, "editPassword")->echoMode());
        EXPECT_EQ(c.user, Child<QLineEdit>(dialog, "editUser")->text());
        EXPECT_EQ(QStringLiteral("start"), Child<QLineEdit>(dialog, "editPassword")->text());
        EXPECT_EQ(c.readOnly, Child<QLineEdit>(dialog, "editUser")->isReadOnly());
    }

    QString user, password;
    CPasswordDialog dialog(nullptr, user, password, false);
    auto* grid = qobject_cast<QGridLayout*>(dialog.layout());
    ASSERT_NE(nullptr, grid);
    int column = 3;
    for (const char* name : {"buttonOK", "buttonCancel"}) {
        auto* button = Child<QPushButton>(dialog, name);
        EXPECT_EQ(column == 3 ? "OK" : "Cancel", button->text());
        EXPECT_EQ(column == 3, button->isDefault());
        int row = 0, at = 0, rowSpan = 0, columnSpan = 0;
        grid->getItemPosition(grid->indexOf(button), &row, &at, &rowSpan, &columnSpan);
        EXPECT_EQ(3, row) << name;
        EXPECT_EQ(column--, at) << name;
    }
}

TEST(CPasswordDialog, OkHandsBackWhatWasTypedCancelLeavesTheStrings)
{
    for (const bool ok : {true, false}) {
        QString user = "eve", password;
        {
            CPasswordDialog dialog(nullptr, user, password, false);
            Child<QLineEdit>(dialog, "editUser")->setText("dave");
            Child<QLineEdit>(dialog, "editPassword")->setText("s3cr3t");
            Child<QPushButton>(dialog, ok ? "buttonOK" : "buttonCancel")->click();
            EXPECT_EQ(ok ? QDialog::Accepted : QDialog::Rejected, dialog.result());
        }
        EXPECT_EQ(ok ? "dave" : "eve", user);
        EXPECT_EQ(ok ? "s3cr3t" : "", password);
    }
}

}  // namespace
