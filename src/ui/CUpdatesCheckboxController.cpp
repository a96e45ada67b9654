#include "ui/CUpdatesCheckboxController.h"

#include "ui/CContentChooserCheckBox.h"
#include "installation/CGalleryCategory.h"
#include "ui/GalleryItemWrapper.h"

CUpdatesCheckboxController::CUpdatesCheckboxController() = default;

CUpdatesCheckboxController::~CUpdatesCheckboxController() = default;

void CUpdatesCheckboxController::OnChange(CHeckBox* box)
{
    auto* chooserBox = dynamic_cast<CContentChooserCheckBox*>(box);
    if (chooserBox && chooserBox->GetWrapper()) {
        const GalleryItemWrapper& wrapper = *chooserBox->GetWrapper();
        const bool offered = !m_offline && wrapper.IsInstalled() && wrapper.HasUpdate() &&
                             wrapper.GetAction() != eGalleryCategoryActionUninstall;
        box->SetEnabled(offered);
        box->SetVisible(offered);
    }
    CContentChooserCheckboxController::OnChange(box);
}

void CUpdatesCheckboxController::CreateBox(int id, int parentId, QTreeWidgetItem* item)
{
    auto box = std::make_shared<CUpdateCheckBox>(id, this);
    box->SetItem(item, m_checkColumn);
    AddBox(id, parentId, std::move(box));
}

void CUpdatesCheckboxController::AddItem(int id, std::shared_ptr<GalleryItemWrapper> wrapper)
{
    if (!wrapper)
        return;
    CContentChooserCheckBox* box = ChooserBox(id);
    box->SetText(wrapper->GetTitle());
    box->SetWrapper(std::move(wrapper));
    InitBox(box);
}

void CUpdatesCheckboxController::InitBox(CHeckBox* box)
{
    if (auto* chooserBox = dynamic_cast<CContentChooserCheckBox*>(box))
        chooserBox->Synchronise();
}
