#include "CheckBoxController/CHeckBoxController.h"

CHeckBoxController::CHeckBoxController() = default;

CHeckBoxController::~CHeckBoxController() = default;

void CHeckBoxController::OnChange(CHeckBox* box)
{
    UpdateParents(box->GetParent());
    UpdateChildren(box);
}

void CHeckBoxController::Click(int id)
{
    if (CHeckBox* box = GetBox(id))
        box->Toggle();
}

CHeckBox* CHeckBoxController::GetBox(int id) const
{
    const auto found = m_boxes.find(id);
    return found == m_boxes.end() ? nullptr : found->second.get();
}

void CHeckBoxController::UpdateParents(CHeckBox* box)
{
    if (!box)
        return;
    const std::vector<CHeckBox*>& children = box->GetChildren();
    auto child = children.begin();
    while (child != children.end() && !(*child)->IsEnabled())
        ++child;
    const bool anyEnabled = child != children.end();
    box->SetEnabled(anyEnabled);

    int result = eCheckBoxUnchecked;
    if (anyEnabled) {
        // Only "checked or not" is compared after the first enabled child, so a later partial
        // child counts as unchecked; a partial first child makes the parent partial.
        const int first = (*child)->GetState();
        result = first == eCheckBoxChecked ? eCheckBoxChecked : eCheckBoxUnchecked;
        bool differs = false;
        for (++child; child != children.end() && !differs; ++child) {
            if (!(*child)->IsEnabled())
                continue;
            const bool checked = (*child)->GetState() == eCheckBoxChecked;
            if (checked != (result == eCheckBoxChecked)) {
                result = eCheckBoxPartial;
                differs = true;
            }
        }
        if (!differs && first == eCheckBoxPartial)
            result = eCheckBoxPartial;
    }
    box->SetOwnState(result);
    UpdateParents(box->GetParent());
}

void CHeckBoxController::UpdateChildren(CHeckBox* box)
{
    for (CHeckBox* child : box->GetChildren()) {
        if (box->GetState() == eCheckBoxPartial)
            child->Unforce();
        else
            child->Force(box->GetState());
        UpdateChildren(child);
    }
}
