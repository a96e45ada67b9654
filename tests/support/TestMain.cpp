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

#ifdef CURATOOL_ASAN_OPTIONS
// Built with the sanitizers: the runtimes read these before main.
extern "C" const char* __asan_default_options()
{
    return CURATOOL_ASAN_OPTIONS;
}
extern "C" const char* __ubsan_default_options()
{
    return CURATOOL_UBSAN_OPTIONS;
}
extern "C" const char* __lsan_default_options()
{
    return CURATOOL_LSAN_OPTIONS;
}
#endif

int main(int argc, char** argv)
{
#ifdef CURATOOL_ASAN_OPTIONS
    // The same for every program a test starts (the real binary above all), unless the caller
    // chose options of their own.
    setenv("ASAN_OPTIONS", CURATOOL_ASAN_OPTIONS, 0);
    setenv("UBSAN_OPTIONS", CURATOOL_UBSAN_OPTIONS, 0);
    setenv("LSAN_OPTIONS", CURATOOL_LSAN_OPTIONS, 0);
#endif
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
