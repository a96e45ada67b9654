#include "ui/GalleryItemWrapper.h"

#include "installation/CGalleryCategory.h"
#include "libZoltaAtl/ZoltaAssert.h"

GalleryItemWrapper::GalleryItemWrapper(CGalleryCategory* category)
    : m_category(category)
{
    ZOLTA_ASSERT_TEXT(category != nullptr, "category != __null");
}

GalleryItemWrapper::~GalleryItemWrapper() = default;

CAtlString GalleryItemWrapper::GetTitle() const
{
    return m_category->GetTitle();
}

bool GalleryItemWrapper::IsInstalled() const
{
    return m_category->IsInstalled();
}

bool GalleryItemWrapper::HasUpdate() const
{
    return m_category->IsUpdateAvailable();
}

int GalleryItemWrapper::GetAction() const
{
    return m_category->GetAction();
}

void GalleryItemWrapper::SetAction(int action, CContentChooserCheckBox* initiator)
{
    if (action == m_category->GetAction())
        return;
    m_category->SetAction(action);
    emit ActionChangedSignal(initiator);
}

unsigned int GalleryItemWrapper::GetDiskSize() const
{
    return static_cast<unsigned int>(m_category->GetDiskSize());
}

unsigned int GalleryItemWrapper::GetFileCount() const
{
    return static_cast<unsigned int>(m_category->GetCount());
}
