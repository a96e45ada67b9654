#include "gallery/lom/LomDate.h"

#include <gtest/gtest.h>

namespace {

TEST(LomDateTest, OnlyWholeValidDatesFrom1971To2037AreAccepted)
{
    const struct {
        const wchar_t* text;
        bool valid;
    } cases[] = {
        {L"", false},
        {L"\xFFFE", false},
        {L"yesterday", false},
        // Four or five fields are neither a date nor a date with time.
        {L"2006-11-27T10", false},
        {L"2006-11-27T10:20", false},
        {L"2006-11", false},
        // Leap days follow the rule without the year 2000.
        {L"2000-02-29", false},
        {L"2004-02-29", true},
        {L"2005-02-29", false},
        {L"2000-02-28", true},
        {L"1970-12-31", false},
        {L"1971-01-02", true},
        {L"2037-12-31", true},
        {L"2038-01-01", false},
        {L"2006-04-31", false},
        {L"2006-06-31", false},
        {L"2006-09-31", false},
        {L"2006-11-31", false},
        {L"2006-12-31", true},
        {L"2006-13-01", false},
        {L"2006-00-01", false},
        {L"2006-01-00", false},
        {L"2006-01-01T24:00:00", false},
        {L"2006-01-01T12:60:00", false},
        {L"2006-01-01T12:00:60", false},
        {L"2006-01-01T23:59:59", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.valid, ParseDate(CAtlString(c.text)) != 0) << CAtlString(c.text).ToUtf8().GetString();
    EXPECT_EQ(0, ParseDate(CAtlString()));
}

TEST(LomDateTest, DatesRoundTripAndADateAloneIsMidnight)
{
    const std::int32_t midnight = ParseDate(CAtlString(L"2006-11-27"));
    ASSERT_NE(0, midnight);
    EXPECT_EQ(CAtlString(L"2006-11-27T00:00:00"), FormatDate(midnight, true));
    EXPECT_EQ(CAtlString(L"2006-11-27"), FormatDate(midnight, false));

    const CAtlString text(L"2010-07-04T23:59:58");
    const std::int32_t time = ParseDate(text);
    EXPECT_EQ(text, FormatDate(time, true));
    EXPECT_EQ(time + 1, ParseDate(CAtlString(L"2010-07-04T23:59:59")));
}

}  // namespace
