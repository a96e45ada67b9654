#include "CGalleryObject.h"

#include "CGalleryMetadata.h"
#include "GalleryText.h"

const wchar_t* CGalleryObject::GetIdentifier() const
{
    return m_metadata && m_metadata->m_identifier ? m_metadata->m_identifier : GalleryEmptyString();
}
