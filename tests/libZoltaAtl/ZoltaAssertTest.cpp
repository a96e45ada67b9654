// The contract checks stay on in every build type and say what failed and where.

#include "AssertionPattern.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <gtest/gtest.h>

namespace {

int CheckedHalf(int value)
{
    ZOLTA_ASSERT(value % 2 == 0);
    return value / 2;
}

const char* CheckedPointer(const char* p)
{
    ZOLTA_ASSERT_TEXT(p != nullptr, "p != __null");
    return p;
}

}  // namespace

TEST(ZoltaAssertDeath, FailingChecksQuoteTheExpressionAndTheLocation)
{
    EXPECT_EQ(CheckedHalf(8), 4);
    EXPECT_STREQ(CheckedPointer("x"), "x");
    EXPECT_DEATH(CheckedHalf(3), AssertionPattern("value % 2 == 0") + " at .*ZoltaAssertTest\\.cpp:[0-9]+");
    EXPECT_DEATH(CheckedPointer(nullptr), AssertionPattern("p != __null"));
}
