#include "CheckBoxController/CHeckBox.h"

#include "CheckBoxController/IBoxObserver.h"
#include "libZoltaAtl/ZoltaAssert.h"

CHeckBox::CHeckBox(int id, IBoxObserver* observer)
    : m_id(id),
      m_observer(observer)
{}

CHeckBox::~CHeckBox() = default;

void CHeckBox::AddChild(CHeckBox* child)
{
    ZOLTA_ASSERT_TEXT(child != nullptr, "child != __null");
    m_children.push_back(child);
    child->SetParent(this);
}

void CHeckBox::ApplyState(int state)
{
    m_shownState = state;
}

void CHeckBox::ShowState(int state)
{
    m_shownState = state;
}

void CHeckBox::Toggle()
{
    int next = eCheckBoxUnchecked;
    switch (GetState()) {
    case eCheckBoxUnchecked:
        next = eCheckBoxChecked;
        break;
    case eCheckBoxChecked:
        next = IsTriState() ? eCheckBoxPartial : eCheckBoxUnchecked;
        break;
    default:
        next = eCheckBoxUnchecked;
        break;
    }
    ChangeState(next);
}

void CHeckBox::ChangeState(int state)
{
    ApplyState(state);
    m_state = state;
    if (m_observer)
        m_observer->OnChange(this);
}

void CHeckBox::Force(int state)
{
    m_forced = true;
    m_forcedState = state;
    ApplyState(state);
}

void CHeckBox::Unforce()
{
    if (!m_forced)
        return;
    m_forced = false;
    ApplyState(m_state);
}

void CHeckBox::SetOwnState(int state)
{
    m_state = state;
    ApplyState(state);
}

void CHeckBox::SetOwnStateQuietly(int state)
{
    m_state = state;
    ShowState(state);
}
