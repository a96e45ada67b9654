#pragma once

class CAtlString;

// How closely two language codes agree, from 0 (not at all) to 3 (the same language and, if
// given, a shared region). Codes split into subtags at "-" and "_"; subtags compare without
// regard to case over the shorter length, so "e" agrees with "en".
//   0: either is blank, or the first subtags differ
//   3: first subtags agree and neither has more, or some further subtags agree
//   2: first subtags agree and only one has more
//   1: both have further subtags and none agree ("zh-CN" and "zh_TW")
int MatchLanguage(const wchar_t* a, const wchar_t* b);

// The user's language for gallery texts, set once at start-up and read-only after that.
// Empty until set.
CAtlString GetCurrentLanguage();
void SetCurrentLanguage(const wchar_t* language);
// The same without a copy; valid until the next SetCurrentLanguage.
const wchar_t* GetCurrentLanguageText();
