#pragma once

#include "CheckBoxController/CHeckBox.h"
#include "CheckBoxController/IBoxObserver.h"

#include <map>
#include <memory>

// Owns the boxes of one tree, keyed by id, and spreads every change: up, where each parent
// recomputes itself from its enabled children, and down, where a checked or cleared box pushes its
// state onto all descendants and a partial one gives each back its own choice.
class CHeckBoxController : public IBoxObserver {
public:
    CHeckBoxController();
    ~CHeckBoxController() override;
    CHeckBoxController(const CHeckBoxController&) = delete;
    CHeckBoxController& operator=(const CHeckBoxController&) = delete;

    void OnChange(CHeckBox* box) override;
    // Drops every box.
    virtual void Clear() = 0;
    // A user's click on box `id`; an unknown id does nothing.
    virtual void Click(int id);

    // Null when there is no such box.
    CHeckBox* GetBox(int id) const;
    // Recomputes `box` (and its ancestors) from its children; null does nothing.
    void UpdateParents(CHeckBox* box);
    // Pushes the state of `box` down through all its descendants.
    void UpdateChildren(CHeckBox* box);

protected:
    std::map<int, std::shared_ptr<CHeckBox>> m_boxes;
};
