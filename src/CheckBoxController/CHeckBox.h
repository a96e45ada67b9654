#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <vector>

class IBoxObserver;

// Box states as plain integers.
enum eCheckBoxState {
    eCheckBoxUnchecked = 0,
    eCheckBoxChecked = 1,
    eCheckBoxPartial = 2,
};

inline int BoxStateFromBool(bool checked)
{
    return checked ? eCheckBoxChecked : eCheckBoxUnchecked;
}

// One three-state check box in a tree, free of any widget: it holds the state the user gave it,
// the state a parent pushes onto it, and the state on show. Bindings to a widget supply the
// abstract operations and override ApplyState to show the state.
class CHeckBox {
public:
    CHeckBox(int id, IBoxObserver* observer);
    virtual ~CHeckBox();
    CHeckBox(const CHeckBox&) = delete;
    CHeckBox& operator=(const CHeckBox&) = delete;

    // Appends `child` (not owned) and makes this box its parent.
    virtual void AddChild(CHeckBox* child);
    virtual bool IsTriState() const = 0;
    virtual void SetText(const CAtlString& text) = 0;
    virtual bool IsEnabled() const = 0;
    virtual void SetEnabled(bool enabled) = 0;
    virtual bool IsVisible() const = 0;
    virtual void SetVisible(bool visible) = 0;
    // Shows a state; overrides may attach side effects (such as changing what the box stands for).
    virtual void ApplyState(int state);
    // Shows a state with no side effects.
    virtual void ShowState(int state);

    int GetId() const { return m_id; }
    // The state on show: every reading of a box's state reads this.
    int GetState() const { return m_shownState; }
    // The state the user or a recomputation gave the box, shown again when a parent's push ends.
    int GetOwnState() const { return m_state; }
    bool IsForced() const { return m_forced; }
    int GetForcedState() const { return m_forcedState; }

    // A user's click: unchecked -> checked -> (partial if tri-state) -> unchecked.
    void Toggle();
    // Shows and keeps `state`, then tells the observer.
    void ChangeState(int state);
    // A parent's push: shown, but the box's own state is kept.
    void Force(int state);
    // Ends a parent's push: the box shows its own state again.
    void Unforce();
    // Keeps and shows `state` without telling the observer.
    void SetOwnState(int state);
    // Keeps and shows `state` without telling the observer and without side effects.
    void SetOwnStateQuietly(int state);

    void SetParent(CHeckBox* parent) { m_parent = parent; }
    CHeckBox* GetParent() const { return m_parent; }
    const std::vector<CHeckBox*>& GetChildren() const { return m_children; }

protected:
    int m_id = 0;
    int m_forcedState = eCheckBoxUnchecked;
    int m_state = eCheckBoxUnchecked;
    int m_shownState = eCheckBoxUnchecked;
    bool m_forced = false;
    CHeckBox* m_parent = nullptr;
    std::vector<CHeckBox*> m_children;
    IBoxObserver* m_observer = nullptr;
};
