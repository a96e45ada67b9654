#include "ui/CContentChooserCheckboxController.h"

#include "ui/CContentChooserCheckBox.h"
#include "libZoltaAtl/ZoltaAssert.h"

CContentChooserCheckboxController::CContentChooserCheckboxController() = default;

CContentChooserCheckboxController::~CContentChooserCheckboxController() = default;

void CContentChooserCheckboxController::Clear()
{
    m_boxes.clear();
}

void CContentChooserCheckboxController::AddBox(int id, int parentId, std::shared_ptr<CHeckBox> box)
{
    ZOLTA_ASSERT_TEXT(box, "px != 0");
    CHeckBox* child = box.get();
    m_boxes[id] = std::move(box);
    if (parentId == 0)
        return;
    CHeckBox* parent = GetBox(parentId);
    if (!parent)
        return;
    parent->AddChild(child);
    if (auto* treeParent = dynamic_cast<CQtTreeCheckBox*>(parent))
        treeParent->SetTriState(true);
}

void CContentChooserCheckboxController::RefreshAll()
{
    // A copy: InitBox runs observers, which must not disturb the walk.
    const auto boxes = m_boxes;
    for (const auto& [id, box] : boxes)
        InitBox(box.get());
}

CContentChooserCheckBox* CContentChooserCheckboxController::ChooserBox(int id) const
{
    auto* box = dynamic_cast<CContentChooserCheckBox*>(GetBox(id));
    ZOLTA_ASSERT_TEXT(box != nullptr, "px != 0");
    return box;
}
