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

TEST(CPasswordDialog, StandardTextsAndLayout)
{
    QString user, password;
    CPasswordDialog dialog(nullptr, user, password, false);
    EXPECT_EQ(QStringLiteral("Authentication"), dialog.windowTitle());
    EXPECT_EQ(QStringLiteral("Type your user name and password."), Child<QLabel>(dialog, "labelPrompt")->text());
    EXPECT_EQ(QStringLiteral("User Name:"), Child<QLabel>(dialog, "labelUser")->text());
    EXPECT_EQ(QStringLiteral("Password:"), Child<QLabel>(dialog, "labelPassword")->text());
    EXPECT_EQ(QLineEdit::Password, Child<QLineEdit>(dialog, "editPassword")->echoMode());
    EXPECT_FALSE(Child<QLineEdit>(dialog, "editUser")->isReadOnly());

    auto* ok = Child<QPushButton>(dialog, "buttonOK");
    auto* cancel = Child<QPushButton>(dialog, "buttonCancel");
    EXPECT_EQ(QStringLiteral("OK"), ok->text());
    EXPECT_EQ(QStringLiteral("Cancel"), cancel->text());
    EXPECT_TRUE(ok->isDefault());

    auto* grid = qobject_cast<QGridLayout*>(dialog.layout());
    ASSERT_NE(nullptr, grid);
    int row, column, rowSpan, columnSpan;
    grid->getItemPosition(grid->indexOf(cancel), &row, &column, &rowSpan, &columnSpan);
    EXPECT_EQ(3, row);
    EXPECT_EQ(2, column);
    grid->getItemPosition(grid->indexOf(ok), &row, &column, &rowSpan, &columnSpan);
    EXPECT_EQ(3, row);
    EXPECT_EQ(3, column);
}

TEST(CPasswordDialog, GivenTextsReplaceTheStandardOnesOnlyWhenNotEmpty)
{
    QString user = "carol", password = "start";
    CPasswordDialog dialog(nullptr, user, password, true, "Proxy", QString(), "Login:", QString());
    EXPECT_EQ(QStringLiteral("Proxy"), dialog.windowTitle());
    EXPECT_EQ(QStringLiteral("Type your user name and password."), Child<QLabel>(dialog, "labelPrompt")->text());
    EXPECT_EQ(QStringLiteral("Login:"), Child<QLabel>(dialog, "labelUser")->text());
    EXPECT_EQ(QStringLiteral("Password:"), Child<QLabel>(dialog, "labelPassword")->text());
    EXPECT_EQ(QStringLiteral("carol"), Child<QLineEdit>(dialog, "editUser")->text());
    EXPECT_EQ(QStringLiteral("start"), Child<QLineEdit>(dialog, "editPassword")->text());
    EXPECT_TRUE(Child<QLineEdit>(dialog, "editUser")->isReadOnly());
}

TEST(CPasswordDialog, OkHandsBackWhatWasTypedCancelLeavesTheStrings)
{
    QString user = "u", password;
    {
        CPasswordDialog dialog(nullptr, user, password, false);
        Child<QLineEdit>(dialog, "editUser")->setText("dave");
        Child<QLineEdit>(dialog, "editPassword")->setText("s3cr3t");
        Child<QPushButton>(dialog, "buttonOK")->click();
        EXPECT_EQ(QDialog::Accepted, dialog.result());
    }
    EXPECT_EQ(QStringLiteral("dave"), user);
    EXPECT_EQ(QStringLiteral("s3cr3t"), password);

    QString user2 = "eve", password2;
    CPasswordDialog dialog(nullptr, user2, password2, false);
    Child<QLineEdit>(dialog, "editPassword")->setText("x");
    Child<QPushButton>(dialog, "buttonCancel")->click();
    EXPECT_EQ(QDialog::Rejected, dialog.result());
    EXPECT_EQ(QStringLiteral("eve"), user2);
    EXPECT_TRUE(password2.isEmpty());
}

}  // namespace
