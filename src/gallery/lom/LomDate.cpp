#include "gallery/lom/LomDate.h"

#include <cwchar>
#include <ctime>

namespace {

constexpr wchar_t kBlankCharacter = 0xFFFE;

bool IsBlankText(const CAtlString& text)
{
    return text.IsEmpty() || (text.GetLength() == 1 && text[0] == kBlankCharacter);
}

int DaysAllowed(int year, int month)
{
    switch (month) {
    case 4:
    case 6:
    case 9:
    case 11:
        return 30;
    case 2:
        return (year % 4 == 0 && year != 2000) ? 29 : 28;
    default:
        return 31;
    }
}

bool FieldsInRange(int year, int month, int day, int hour, int minute, int second)
{
    if (year < 1971 || year > 2037) {
        return false;
    }
    if (month < 1 || month > 12 || day < 1 || day > 31) {
        return false;
    }
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) {
        return false;
    }
    return day <= DaysAllowed(year, month);
}

}  // namespace

std::int32_t ParseDate(const CAtlString& text)
{
    if (IsBlankText(text)) {
        return 0;
    }
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    const int fields =
        std::swscanf(text.GetString(), L"%d-%02d-%02dT%02d:%02d:%02d", &year, &month, &day, &hour, &minute, &second);
    if (fields != 3 && fields != 6) {
        return 0;
    }
    if (fields == 3) {
        hour = minute = second = 0;
    }
    if (!FieldsInRange(year, month, day, hour, minute, second)) {
        return 0;
    }
    std::tm parts{};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = -1;
    const std::time_t converted = std::mktime(&parts);
    if (converted == static_cast<std::time_t>(-1)) {
        return 0;
    }
    return static_cast<std::int32_t>(converted);
}

CAtlString FormatDate(std::int32_t time, bool withTime)
{
    const std::time_t value = time;
    std::tm parts{};
    if (localtime_r(&value, &parts) == nullptr) {
        return CAtlString();
    }
    CAtlString text;
    if (withTime) {
        text.Format(L"%d-%02d-%02dT%02d:%02d:%02d", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                    parts.tm_hour, parts.tm_min, parts.tm_sec);
    } else {
        text.Format(L"%d-%02d-%02d", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
    }
    return text;
}
