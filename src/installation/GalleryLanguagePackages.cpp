// Which string packages of a category a run applies, and in which order.
#include "installation/CGalleryInstallation.h"

#include "gallery/GalleryLanguage.h"

namespace {

bool HasRegion(const CAtlString& language)
{
    return language.Find(L'_') >= 0 || language.Find(L'-') >= 0;
}

std::vector<CAtlString> LanguagesBehind(const CGalleryCategory& category)
{
    std::vector<CAtlString> languages;
    for (const CGalleryCategoryFile& file : category.GetFiles()) {
        for (const auto& [language, version] : file.GetStrings()) {
            bool current = false;
            for (const auto& [installedLanguage, installedVersion] : file.GetInstalledStrings())
                if (MatchLanguage(installedLanguage, language) >= 2 &&
                    CompareVersionText(installedVersion, version) > 0)
                    current = true;
            if (!current)
                languages.push_back(language);
        }
    }
    return languages;
}

// One entry per language: exact repeats go; of two regions of one language the one without a
// region stays, or else the later one.
void ThinOut(std::vector<CAtlString>& languages)
{
    for (std::size_t i = 0; i < languages.size(); ++i) {
        for (std::size_t j = languages.size() - 1; j > i; --j) {
            const int level = MatchLanguage(languages[i], languages[j]);
            if (level == 3)
                languages.erase(languages.begin() + static_cast<std::ptrdiff_t>(j));
            else if (level == 2) {
                if (HasRegion(languages[i]))
                    languages[i] = languages[j];
                languages.erase(languages.begin() + static_cast<std::ptrdiff_t>(j));
            }
        }
    }
}

}  // namespace

std::vector<CAtlString> ListLanguagePackages(const CGalleryCategory& category, bool updatesOnly)
{
    const auto& strings = category.GetStrings();
    std::vector<CAtlString> languages;
    if (updatesOnly)
        languages = LanguagesBehind(category);
    else
        for (const auto& entry : strings)
            languages.push_back(entry.first);

    ThinOut(languages);

    std::vector<CAtlString> packages;
    for (const CAtlString& language : languages) {
        for (const auto& [key, fileName] : strings) {
            if (MatchLanguage(language, key) >= 2) {
                packages.push_back(fileName);
                break;
            }
        }
    }
    return packages;
}
