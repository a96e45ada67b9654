#include "foundation/SystemLocation.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

class SystemLocationTest : public testing::Test {
protected:
    void SetUp() override
    {
        const char* root = std::getenv("CURATOOL_ROOT");
        saved = root ? root : "";
    }
    void TearDown() override { setenv("CURATOOL_ROOT", saved.c_str(), 1); }
    std::string saved;
};

TEST_F(SystemLocationTest, MovesFixedPathsBelowTheRootWhenThereIsOne)
{
    setenv("CURATOOL_ROOT", "/srv/trial/", 1);
    EXPECT_EQ("/srv/trial/usr/local/share/ZOLTA Scrivent Galleries",
              curatool::SystemLocation(std::string_view("/usr/local/share/ZOLTA Scrivent Galleries")));
    EXPECT_EQ(QString("/srv/trial/tmp/testmark.dat"), curatool::SystemLocation(QString("/tmp/testmark.dat")));
    // Relative paths are not fixed locations and stay as they are.
    EXPECT_EQ("relative/x", curatool::SystemLocation(std::string_view("relative/x")));

    setenv("CURATOOL_ROOT", "", 1);
    EXPECT_EQ("/etc/xdg", curatool::SystemLocation(std::string_view("/etc/xdg")));
    EXPECT_EQ("", curatool::SystemRoot());
    unsetenv("CURATOOL_ROOT");
    EXPECT_EQ("/etc/xdg", curatool::SystemLocation(std::string_view("/etc/xdg")));
}

}  // namespace
