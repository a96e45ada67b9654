#include "LomDate.h"

#include <gtest/gtest.h>

namespace {

TEST(LomDateTest, BlankOrUnscannableTextGivesZero)
{
    EXPECT_EQ(0, ParseDate(CAtlString()));
    EXPECT_EQ(0, ParseDate(CAtlString(L"\xFFFE")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"yesterday")));
    // Four or five fields are neither a date nor a date with time.
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-11-27T10")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-11-27T10:20")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-11")));
}

TEST(LomDateTest, DateWithoutTimeIsMidnightLocalTime)
{
    const std::int32_t time = ParseDate(CAtlString(L"2006-11-27"));
    ASSERT_NE(0, time);
    EXPECT_EQ(CAtlString(L"2006-11-27T00:00:00"), FormatDate(time, true));
    EXPECT_EQ(CAtlString(L"2006-11-27"), FormatDate(time, false));
}

TEST(LomDateTest, DateWithTimeRoundTrips)
{
    const CAtlString text(L"2010-07-04T23:59:58");
    const std::int32_t time = ParseDate(text);
    ASSERT_NE(0, time);
    EXPECT_EQ(text, FormatDate(time, true));
    EXPECT_EQ(time + 1, ParseDate(CAtlString(L"2010-07-04T23:59:59")));
}

TEST(LomDateTest, LeapDaysFollowTheRuleWithoutTheYear2000)
{
    EXPECT_EQ(0, ParseDate(CAtlString(L"2000-02-29")));
    EXPECT_NE(0, ParseDate(CAtlString(L"2004-02-29")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2005-02-29")));
    EXPECT_NE(0, ParseDate(CAtlString(L"2000-02-28")));
}

TEST(LomDateTest, YearRangeIs1971To2037)
{
    EXPECT_EQ(0, ParseDate(CAtlString(L"1970-12-31")));
    EXPECT_NE(0, ParseDate(CAtlString(L"1971-01-02")));
    EXPECT_NE(0, ParseDate(CAtlString(L"2037-12-31")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2038-01-01")));
}

TEST(LomDateTest, FieldRangesAndShortMonths)
{
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-04-31")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-06-31")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-09-31")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-11-31")));
    EXPECT_NE(0, ParseDate(CAtlString(L"2006-12-31")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-13-01")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-00-01")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-01-00")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-01-01T24:00:00")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-01-01T12:60:00")));
    EXPECT_EQ(0, ParseDate(CAtlString(L"2006-01-01T12:00:60")));
    EXPECT_NE(0, ParseDate(CAtlString(L"2006-01-01T23:59:59")));
}

}  // namespace
