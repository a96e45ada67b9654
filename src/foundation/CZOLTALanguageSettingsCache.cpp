#include "foundation/CZOLTALanguageSettingsCache.h"

#include "foundation/CSettingsStore.h"
#include "foundation/LanguageSettings.h"

#include <QSettings>

namespace {

const wchar_t kLanguageSection[] = L"Software\\ZOLTA Technologies Inc.\\Language";
const wchar_t kLanguageValue[] = L"LanguageID";
const wchar_t kRegistryName[] = L"com.zoltaworks.Registry";

QString StoredLanguage()
{
    return CSettingsStore::ReadString(true, CAtlString(kLanguageSection), CAtlString(kLanguageValue), CAtlString(),
                                      nullptr, CAtlString(kRegistryName))
        .ToQString();
}

}  // namespace

CZOLTALanguageSettingsCache* CZOLTALanguageSettingsCache::m_pTheOneandOnlyInstance = nullptr;

CZOLTALanguageSettingsCache::CZOLTALanguageSettingsCache(const CAtlString& application)
    : m_languageKeys(17),
      m_application(application)
{
    if (application.IsEmpty())
        return;
    m_languageKeys.emplace(CAtlString(L"Scrivent"),
                           CAtlString(L"Software\\ZOLTA Technologies Inc.\\ZOLTA Scrivent\\Language"));
    m_languageKeys.emplace(CAtlString(L"TavoliteSW"),
                           CAtlString(L"Software\\ZOLTA Technologies Inc.\\ZOLTA Tavolite Software\\Language"));
}

CZOLTALanguageSettingsCache* CZOLTALanguageSettingsCache::GetInstance(const CAtlString& application)
{
    if (m_pTheOneandOnlyInstance && (application.IsEmpty() || application == m_pTheOneandOnlyInstance->m_application))
        return m_pTheOneandOnlyInstance;
    // A former instance stays alive: whoever asked for it may still use it.
    m_pTheOneandOnlyInstance = new CZOLTALanguageSettingsCache(application);
    return m_pTheOneandOnlyInstance;
}

void CZOLTALanguageSettingsCache::DestroyInstance()
{
    delete m_pTheOneandOnlyInstance;
    m_pTheOneandOnlyInstance = nullptr;
}

CAtlString CZOLTALanguageSettingsCache::GetLanguageKey(const CAtlString& application) const
{
    const auto found = m_languageKeys.find(application);
    return found == m_languageKeys.end() ? CAtlString() : found->second;
}

bool CZOLTALanguageSettingsCache::IsLanguageSet()
{
    return !StoredLanguage().isEmpty();
}

CAtlString CZOLTALanguageSettingsCache::GetLanguageCode()
{
    QString language = StoredLanguage();
    if (language.isEmpty())
        language = GetKdeSessionLanguage();
    if (language.isEmpty())
        language = GetSystemLanguage();
    if (language == QLatin1String("en_US"))
        language = QStringLiteral("en_CA");
    return CAtlString(language);
}

QString GetKdeSessionLanguage()
{
    if (!qEnvironmentVariableIsSet("KDE_FULL_SESSION"))
        return QString();
    const QString file = QString::fromLocal8Bit(qgetenv("HOME")) + QStringLiteral("/.kde/share/config/kdeglobals");
    QSettings kdeGlobals(file, QSettings::IniFormat);
    const QString languages = kdeGlobals.value(QStringLiteral("Locale/Language"), QString()).toString();
    return languages.section(QLatin1Char(':'), 0, 0);
}
