#pragma once

#include <QString>

// The language of the system locale: "C" is "en_CA"; English, Portuguese, Chinese and Hindi keep
// their region ("pt_BR"), every other language drops it ("fr_CA" gives "fr").
QString GetSystemLanguage();
QString LanguageOfLocaleName(const QString& localeName);

// With `useSettings`, the code CZOLTALanguageSettingsCache works out (the cache lives for this one
// question); otherwise the system's language.
QString GetUILanguage(bool useSettings);

// Loads `<directory>/Languages/<language>/<name>` into the process's one translator and installs it.
// English needs no catalogue: a missing one is then no failure.
[[nodiscard]] bool LoadCatalogue(const QString& directory, const QString& name, bool useSettings);
