#include "foundation/LanguageSettings.h"

#include "foundation/CZOLTALanguageSettingsCache.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

namespace {

QTranslator& ProcessTranslator()
{
    static QTranslator translator;
    return translator;
}

}  // namespace

QString LanguageOfLocaleName(const QString& localeName)
{
    if (localeName == QLatin1String("C"))
        return QStringLiteral("en_CA");
    const QString language = localeName.section(QLatin1Char('_'), 0, 0);
    static const QStringList keepRegion = {QStringLiteral("en"), QStringLiteral("pt"), QStringLiteral("zh"),
                                           QStringLiteral("hi")};
    return keepRegion.contains(language) ? localeName : language;
}

QString GetSystemLanguage()
{
    return LanguageOfLocaleName(QLocale::system().name());
}

QString GetUILanguage(bool useSettings)
{
    if (!useSettings)
        return GetSystemLanguage();
    const QString language = CZOLTALanguageSettingsCache::GetInstance(CAtlString())->GetLanguageCode().ToQString();
    CZOLTALanguageSettingsCache::DestroyInstance();
    return language;
}

bool LoadCatalogue(const QString& directory, const QString& name, bool useSettings)
{
    const QString language = GetUILanguage(useSettings);
    const QString path = directory + QStringLiteral("/Languages/") + language + QLatin1Char('/');
    if (!name.isEmpty() && ProcessTranslator().load(name, path)) {
        QCoreApplication::installTranslator(&ProcessTranslator());
        return true;
    }
    return language.startsWith(QLatin1String("en"));
}
