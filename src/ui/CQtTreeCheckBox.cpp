#include "ui/CQtTreeCheckBox.h"

#include <QTreeWidget>
#include <QTreeWidgetItem>

Qt::CheckState QtCheckState(int boxState)
{
    switch (boxState) {
    case eCheckBoxChecked:
        return Qt::Checked;
    case eCheckBoxPartial:
        return Qt::PartiallyChecked;
    default:
        return Qt::Unchecked;
    }
}

CQtTreeCheckBox::CQtTreeCheckBox(int id, IBoxObserver* observer)
    : CHeckBox(id, observer)
{}

CQtTreeCheckBox::~CQtTreeCheckBox() = default;

void CQtTreeCheckBox::SetItem(QTreeWidgetItem* item, int column)
{
    m_item = item;
    m_column = column;
    if (!m_item)
        return;
    // The mark is shown, not handed to the view: a click on it must reach the controller once,
    // not also flip the mark on its own.
    m_item->setFlags(m_item->flags() & ~(Qt::ItemIsUserCheckable | Qt::ItemIsAutoTristate));
    m_enabled = m_item->flags().testFlag(Qt::ItemIsEnabled);
}

void CQtTreeCheckBox::SetText(const CAtlString& text)
{
    if (m_item)
        m_item->setData(m_column, Qt::DisplayRole, text.ToQString());
}

bool CQtTreeCheckBox::IsEnabled() const
{
    if (!m_item || m_item->flags().testFlag(Qt::ItemIsEnabled))
        return true;
    // A row under a disabled parent shows disabled whatever its own setting; its own setting is
    // what decides, or a parent could never be enabled again by its children.
    const QTreeWidgetItem* parent = m_item->parent();
    return m_enabled && parent && !parent->flags().testFlag(Qt::ItemIsEnabled);
}

void CQtTreeCheckBox::SetEnabled(bool enabled)
{
    m_enabled = enabled;
    // setFlags announces the change to the model, and the view repaints the row.
    if (m_item)
        m_item->setFlags(m_item->flags().setFlag(Qt::ItemIsEnabled, enabled));
}

bool CQtTreeCheckBox::IsVisible() const
{
    return !m_item || !m_item->treeWidget() || !m_item->isHidden();
}

void CQtTreeCheckBox::SetVisible(bool visible)
{
    if (!m_item || !m_item->treeWidget())
        return;
    const bool wasHidden = m_item->isHidden();
    m_item->setHidden(!visible);
    QTreeWidgetItem* parent = m_item->parent();
    if (visible && wasHidden && parent && parent->treeWidget()) {
        // Collapsing and expanding the parent makes the view lay out the row that came back.
        parent->setExpanded(false);
        parent->setExpanded(true);
    }
}

void CQtTreeCheckBox::ApplyState(int state)
{
    CHeckBox::ApplyState(state);
    ShowOnItem();
}

void CQtTreeCheckBox::ShowState(int state)
{
    CHeckBox::ShowState(state);
    ShowOnItem();
}

void CQtTreeCheckBox::ShowOnItem()
{
    if (m_item)
        m_item->setData(m_column, Qt::CheckStateRole, QtCheckState(GetState()));
}

void CQtTreeCheckBox::OnClicked(bool)
{
    if (IsEnabled())
        Toggle();
}
