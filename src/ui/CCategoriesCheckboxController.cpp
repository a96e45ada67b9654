#include "ui/CCategoriesCheckboxController.h"

#include "ui/CContentChooserCheckBox.h"
#include "installation/CGalleryCategory.h"
#include "ui/GalleryItemWrapper.h"
#include "ui/ITotalObserver.h"

#include <QTreeWidgetItem>

CCategoriesCheckboxController::CCategoriesCheckboxController(ITotalObserver* totalObserver)
    : m_totalObserver(totalObserver)
{}

CCategoriesCheckboxController::~CCategoriesCheckboxController() = default;

void CCategoriesCheckboxController::OnChange(CHeckBox* box)
{
    CContentChooserCheckboxController::OnChange(box);
    Recount();
}

void CCategoriesCheckboxController::Clear()
{
    CContentChooserCheckboxController::Clear();
    ResetTotals();
}

void CCategoriesCheckboxController::CreateBox(int id, int parentId, QTreeWidgetItem* item)
{
    auto box = std::make_shared<CCategoryCheckBox>(id, this);
    box->SetItem(item, m_checkColumn);
    AddBox(id, parentId, std::move(box));
}

void CCategoriesCheckboxController::AddItem(int id, std::shared_ptr<GalleryItemWrapper> wrapper)
{
    if (!wrapper)
        return;
    if (wrapper->IsInstalled()) {
        m_installedSize += wrapper->GetDiskSize();
        m_installedCount += wrapper->GetFileCount();
    }
    CContentChooserCheckBox* box = ChooserBox(id);
    box->SetText(wrapper->GetTitle());
    if (box->GetItem() && m_sizeColumn >= 0)
        box->GetItem()->setData(m_sizeColumn, Qt::DisplayRole, FormatByteSize(wrapper->GetDiskSize()).ToQString());
    box->SetWrapper(std::move(wrapper));
    InitBox(box);
}

void CCategoriesCheckboxController::InitBox(CHeckBox* box)
{
    auto* chooserBox = dynamic_cast<CContentChooserCheckBox*>(box);
    if (!chooserBox)
        return;
    if (const auto& wrapper = chooserBox->GetWrapper()) {
        if (m_disableInstalled && wrapper->IsInstalled())
            chooserBox->SetEnabled(false);
        if (m_offline && !wrapper->IsInstalled())
            chooserBox->SetEnabled(false);
    }
    chooserBox->Synchronise();
}

void CCategoriesCheckboxController::Recount()
{
    m_addSize = m_addCount = m_removeSize = m_removeCount = 0;
    for (const auto& [id, box] : m_boxes) {
        const auto* chooserBox = dynamic_cast<const CContentChooserCheckBox*>(box.get());
        const GalleryItemWrapper* wrapper = chooserBox ? chooserBox->GetWrapper().get() : nullptr;
        if (!wrapper)
            continue;
        if (wrapper->GetAction() == eGalleryCategoryActionInstall) {
            m_addSize += wrapper->GetDiskSize();
            m_addCount += wrapper->GetFileCount();
        } else if (wrapper->GetAction() == eGalleryCategoryActionUninstall) {
            m_removeSize += wrapper->GetDiskSize();
            m_removeCount += wrapper->GetFileCount();
        }
    }
    if (m_totalObserver)
        m_totalObserver->OnTotalsChanged();
}

void CCategoriesCheckboxController::ResetTotals()
{
    m_installedSize = m_installedCount = 0;
    m_addSize = m_addCount = 0;
    m_removeSize = m_removeCount = 0;
}
