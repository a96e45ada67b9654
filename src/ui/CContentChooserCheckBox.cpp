#include "ui/CContentChooserCheckBox.h"

#include "installation/CGalleryCategory.h"
#include "ui/GalleryItemWrapper.h"
#include "CheckBoxController/IBoxObserver.h"

CContentChooserCheckBox::CContentChooserCheckBox(int id, IBoxObserver* observer)
    : CQtTreeCheckBox(id, observer)
{}

CContentChooserCheckBox::~CContentChooserCheckBox() = default;

void CContentChooserCheckBox::SetWrapper(std::shared_ptr<GalleryItemWrapper> wrapper)
{
    if (m_wrapper)
        disconnect(m_wrapper.get(), nullptr, this, nullptr);
    m_wrapper = std::move(wrapper);
    if (m_wrapper)
        connect(m_wrapper.get(), &GalleryItemWrapper::ActionChangedSignal, this,
                &CContentChooserCheckBox::ItemActionChangedSlot);
}

void CContentChooserCheckBox::SetAction(int action)
{
    if (m_wrapper)
        m_wrapper->SetAction(action, this);
}

void CContentChooserCheckBox::ItemActionChangedSlot(CContentChooserCheckBox* initiator)
{
    // A box does not re-enter its own change.
    if (initiator != this)
        Synchronise();
}

void CCategoryCheckBox::ApplyState(int state)
{
    if (!IsEnabled())
        return;
    CQtTreeCheckBox::ApplyState(state);
    if (!m_wrapper)
        return;
    const bool installed = m_wrapper->IsInstalled();
    if (state == eCheckBoxChecked)
        SetAction(installed ? eGalleryCategoryActionNone : eGalleryCategoryActionInstall);
    else if (state == eCheckBoxUnchecked)
        SetAction(installed ? eGalleryCategoryActionUninstall : eGalleryCategoryActionNone);
}

void CCategoryCheckBox::ShowState(int state)
{
    CQtTreeCheckBox::ShowState(state);
}

void CCategoryCheckBox::Synchronise()
{
    if (!m_wrapper)
        return;
    const int action = m_wrapper->GetAction();
    const bool present = action == eGalleryCategoryActionInstall || action == eGalleryCategoryActionUpdate;
    SetOwnStateQuietly(present ? eCheckBoxChecked : BoxStateFromBool(m_wrapper->IsInstalled()));
    m_observer->OnChange(this);
}

void CUpdateCheckBox::ApplyState(int state)
{
    if (!IsEnabled())
        return;
    CQtTreeCheckBox::ApplyState(state);
    if (!m_wrapper)
        return;
    if (state == eCheckBoxChecked)
        SetAction(eGalleryCategoryActionUpdate);
    else if (state == eCheckBoxUnchecked)
        SetAction(eGalleryCategoryActionNone);
}

void CUpdateCheckBox::ShowState(int state)
{
    CQtTreeCheckBox::ShowState(state);
}

void CUpdateCheckBox::Synchronise()
{
    if (!m_wrapper)
        return;
    SetOwnStateQuietly(BoxStateFromBool(m_wrapper->GetAction() == eGalleryCategoryActionUpdate));
    m_observer->OnChange(this);
}
