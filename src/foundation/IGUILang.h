#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <cstdint>

// What the interface language is, as the rest of the program asks it. The order of the operations
// is part of the interface.
class IGUILang {
public:
    virtual ~IGUILang() = default;

    virtual bool IsLanguageSet() = 0;
    virtual void Initialize() = 0;
    virtual bool IsDefaultLanguage() = 0;
    virtual int32_t GetLanguageId() = 0;
    virtual CAtlString GetLanguageCode() = 0;
};

// The answer when nothing is known: Canadian English, the language the texts are written in.
class CGenericGUILang : public IGUILang {
public:
    bool IsLanguageSet() override { return false; }
    void Initialize() override {}
    bool IsDefaultLanguage() override { return true; }
    int32_t GetLanguageId() override { return 0; }
    CAtlString GetLanguageCode() override { return CAtlString(L"en_CA"); }
};
