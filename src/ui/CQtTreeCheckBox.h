#pragma once

#include "CheckBoxController/CHeckBox.h"

#include <QObject>

class QTreeWidgetItem;

// The Qt check state that shows a box state; anything unknown shows unchecked.
Qt::CheckState QtCheckState(int boxState);

// A box shown as the check mark of one column of a tree row. The row is not made user-checkable:
// every click goes through the box's controller, so the mark never changes behind its back.
class CQtTreeCheckBox : public QObject, public CHeckBox {
    Q_OBJECT
public:
    CQtTreeCheckBox(int id, IBoxObserver* observer);
    ~CQtTreeCheckBox() override;

    bool IsTriState() const override { return m_triState; }
    void SetTriState(bool triState) { m_triState = triState; }
    void SetText(const CAtlString& text) override;
    bool IsEnabled() const override;
    void SetEnabled(bool enabled) override;
    bool IsVisible() const override;
    void SetVisible(bool visible) override;
    void ApplyState(int state) override;
    void ShowState(int state) override;

    QTreeWidgetItem* GetItem() const { return m_item; }
    int GetColumn() const { return m_column; }
    void SetItem(QTreeWidgetItem* item, int column);

public slots:
    // A second way to toggle, for a row clicked outside a controller; a disabled row stays as it is.
    void OnClicked(bool checked);

protected:
    void ShowOnItem();

    QTreeWidgetItem* m_item = nullptr;
    int m_column = 0;
    bool m_triState = false;
    bool m_enabled = true;  // the row's own setting, which a disabled parent hides
};
