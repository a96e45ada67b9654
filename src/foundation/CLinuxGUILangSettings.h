#pragma once

#include "foundation/IGUILang.h"

// The language record of this platform. One instance serves the whole process: it is made on first
// use and lives until the process ends. It never knows a code of its own; the code comes from
// CZOLTALanguageSettingsCache.
class CLinuxGUILangSettings : public IGUILang {
public:
    static CLinuxGUILangSettings* GetInstance();

    bool IsLanguageSet() override { return m_languageSet; }
    // English (Canada), not chosen by the user.
    void Initialize() override;
    bool IsDefaultLanguage() override { return m_isDefault; }
    int32_t GetLanguageId() override { return m_languageId; }
    CAtlString GetLanguageCode() override { return CAtlString(); }

private:
    CLinuxGUILangSettings() = default;

    bool m_languageSet = false;
    int32_t m_languageId = 0;
    bool m_isDefault = false;
};
