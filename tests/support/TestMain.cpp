#include "TestEnvironment.h"

// The same main serves every test program; only the widget tests get a QApplication.
#ifdef CURATOOL_TEST_WIDGETS
#include <QApplication>
using TestApplication = QApplication;
#else
#include <QCoreApplication>
using TestApplication = QCoreApplication;
#endif

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // The scratch tree and its environment exist before anything else reads HOME or TMPDIR.
    const std::string root = curatool::test::ScratchRoot();
    setenv("QT_QPA_PLATFORM", "offscreen", 1);

    testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    int result;
    {
        TestApplication app(argc, argv);
        result = RUN_ALL_TESTS();
    }
    if (curatool::test::OwnsScratchRoot() && !std::getenv("CURATOOL_KEEP_TEST_DIRS")) {
        std::error_code ec;
        std::filesystem::remove_all(root, ec);
    }
    return result;
}
