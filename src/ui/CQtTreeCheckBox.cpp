#include "CQtTreeCheckBox.h"

#include <QTreeWidget>
#include <QTreeWidgetItem>

Qt::CheckState QtCheckState(int boxState)
{
    switch (boxState)
    {
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
{
}

CQtTreeCheckBox::~CQtTreeCheckBox() = default;

void CQtTreeCheckBox::SetItem(QTreeWidgetItem* item, int column)
{
    m_item = item;
    m_column = column;
}

void CQtTreeCheckBox::SetText(const CAtlString& text)
{
    if (m_item)
        m_item->setData(m_column, Qt::DisplayRole, text.ToQString());
}

bool CQtTreeCheckBox::IsEnabled() const
{
    return !m_item || m_item->flags().testFlag(Qt::ItemIsEnabled);
}

void CQtTreeCheckBox::SetEnabled(bool enabled)
{
    if (!m_item || IsEnabled() == enabled)
        return;
    // setFlags announces the change to the model, and the view repaints the row.
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
    m_item->setHidden(!visible);
    QTreeWidgetItem* parent = m_item->parent();
    if (visible && parent && parent->treeWidget())
    {
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
