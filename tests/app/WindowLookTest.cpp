#include "app/CApplicationFactory.h"
#include "app/StartupSteps.h"

#include <QApplication>
#include <QIcon>
#include <QStyle>

#include <gtest/gtest.h>

TEST(WindowLook, GivesTheWindowBasedRunItsStyleSheetAndTheProgramIcon)
{
    CApplicationFactory factory;
    StartupSteps::ApplyWindowLook(factory);
    EXPECT_EQ(CApplicationFactory::DEFAULT_STYLE_SHEET, qApp->styleSheet());
    // The icon comes from the program's own resources, linked in from the interface library.
    EXPECT_EQ(QSize(64, 64), QApplication::windowIcon().actualSize(QSize(64, 64)));
    qApp->setStyleSheet(QString());
}
