#pragma once

#include "foundation/IGUILang.h"

#include <QString>

#include <unordered_map>

// Works out the interface language from the settings store, KDE's configuration and the system
// locale. Made for one application key; one instance is current at a time.
class CZOLTALanguageSettingsCache : public IGUILang {
public:
    // The current instance. An empty key, or the key it was made for, gives the current one; another
    // key makes a new current instance and leaves the former one alive, since callers may still hold it.
    static CZOLTALanguageSettingsCache* GetInstance(const CAtlString& application);
    // Deletes the current instance, if any, and forgets it.
    static void DestroyInstance();

    // The settings store's "LanguageID", else the first language of a KDE session, else the system's;
    // "en_US" is given as "en_CA", the base English of the catalogues.
    CAtlString GetLanguageCode() override;

    // True when the settings store names a language.
    bool IsLanguageSet() override;
    void Initialize() override {}
    bool IsDefaultLanguage() override { return !IsLanguageSet(); }
    int32_t GetLanguageId() override { return 0; }

    const CAtlString& GetApplication() const { return m_application; }
    // The settings section of an application's own language ("Scrivent", "TavoliteSW"); empty if unknown.
    CAtlString GetLanguageKey(const CAtlString& application) const;

private:
    explicit CZOLTALanguageSettingsCache(const CAtlString& application);

    std::unordered_map<CAtlString, CAtlString> m_languageKeys;
    CAtlString m_application;

    static CZOLTALanguageSettingsCache* m_pTheOneandOnlyInstance;
};

// The language of the KDE session, or empty outside one or when KDE names none.
QString GetKdeSessionLanguage();
