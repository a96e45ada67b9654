#include "gallery/CGalleryObject.h"

#include "gallery/CGalleryMetadata.h"
#include "gallery/GalleryText.h"

const wchar_t* CGalleryObject::GetIdentifier() const
{
    return m_metadata && m_metadata->m_identifier ? m_metadata->m_identifier : GalleryEmptyString();
}
