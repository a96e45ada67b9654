#include "gallery/GalleryUtf8.h"

#include "gallery/GalleryText.h"
#include "libZoltaAtl/UniCharUtils.h"

#include <cstdlib>

namespace {

const char kBlankUtf8[] = "\xEF\xBF\xBE";

}  // namespace

std::string ToUtf8(const wchar_t* text)
{
    if (!text || !*text) {
        return std::string();
    }
    char* bytes = WCA32toNewCA(text);
    if (!bytes) {
        return std::string();
    }
    std::string result(bytes);
    std::free(bytes);
    return result;
}

std::string ToUtf8OrBlank(const wchar_t* text)
{
    return IsBlankText(text) ? std::string(kBlankUtf8) : ToUtf8(text);
}

CAtlString FromUtf8(const char* text)
{
    if (!text || !*text) {
        return CAtlString();
    }
    wchar_t* wide = CAtoNewWCA32(text);
    if (!wide) {
        return CAtlString();
    }
    CAtlString result(wide);
    std::free(wide);
    return result;
}
