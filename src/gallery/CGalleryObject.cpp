#include "gallery/CGalleryObject.h"

#include "gallery/CGalleryMetadata.h"
#include "gallery/GalleryText.h"

const wchar_t* CGalleryObject::GetIdentifier() const
{
    return m_metadata && m_metadata->m_identifier ? m_metadata->m_identifier : GalleryEmptyString();
}

CAtlStringA CGalleryObject::FileText(const wchar_t* text)
{
    // From a bare wide pointer the 8-bit string takes the UTF-8 form.
    return IsBlankText(text) ? CAtlStringA("\xEF\xBF\xBE") : CAtlStringA(text);
}
