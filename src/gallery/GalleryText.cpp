#include "gallery/GalleryText.h"

#include "gallery/CGalleryImageRegistry.h"

#include <cstdlib>
#include <cwchar>
#include <new>

namespace {
const wchar_t kEmptyText[1] = {0};
}

const wchar_t* GalleryEmptyString()
{
    return kEmptyText;
}

bool IsBlankText(const wchar_t* text)
{
    return text == nullptr || text[0] == 0 || (text[0] == 0xFFFE && text[1] == 0);
}

wchar_t* GalleryCopyText(const wchar_t* value, std::size_t count)
{
    wchar_t* copy = new (std::nothrow) wchar_t[count + 1];
    if (!copy)
        return nullptr;
    if (count)
        std::wmemcpy(copy, value, count);
    copy[count] = 0;
    return copy;
}

HRESULT GalleryAssignText(const wchar_t*& field, const wchar_t* value)
{
    const wchar_t* replacement = kEmptyText;
    if (value && value[0]) {
        replacement = GalleryCopyText(value, std::wcslen(value));
        if (!replacement)
            return E_OUTOFMEMORY;
    }
    GalleryFreeText(field);
    field = replacement;
    return S_OK;
}

void GalleryFreeText(const wchar_t*& field)
{
    if (field && field != kEmptyText && !CGalleryImageRegistry::Contains(field))
        delete[] field;
    field = kEmptyText;
}

void GalleryFreeRecord(void* record)
{
    if (record && !CGalleryImageRegistry::Contains(record))
        std::free(record);
}

std::uint32_t GalleryStringHash(const wchar_t* text, std::uint32_t start)
{
    std::uint32_t hash = start;
    if (text) {
        for (; *text; ++text)
            hash = hash * 33u + static_cast<std::uint32_t>(*text);
    }
    return hash;
}
