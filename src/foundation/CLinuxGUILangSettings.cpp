#include "foundation/CLinuxGUILangSettings.h"

namespace {
constexpr int32_t kEnglishCanada = 0x1009;
}

CLinuxGUILangSettings* CLinuxGUILangSettings::GetInstance()
{
    // Deliberately never deleted: callers may hold the pointer until the very end of the process.
    static CLinuxGUILangSettings* instance = new CLinuxGUILangSettings();
    return instance;
}

void CLinuxGUILangSettings::Initialize()
{
    m_languageId = kEnglishCanada;
    m_languageSet = false;
    m_isDefault = false;
}
