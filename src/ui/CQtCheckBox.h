#pragma once

#include "CheckBoxController/CHeckBox.h"

#include <QObject>
#include <QPointer>

#include <QCheckBox>

// A box shown as a QCheckBox. Its clicks toggle the box; the widget's own idea of the next state
// is overruled by the box's.
class CQtCheckBox : public QObject, public CHeckBox {
    Q_OBJECT
public:
    CQtCheckBox(int id, IBoxObserver* observer, QCheckBox* checkBox = nullptr);
    ~CQtCheckBox() override;

    // Shows the box on `checkBox` (not owned) and listens to its clicks.
    void SetCheckBox(QCheckBox* checkBox);
    QCheckBox* GetCheckBox() const { return m_checkBox; }

    bool IsTriState() const override;
    void SetText(const CAtlString& text) override;
    bool IsEnabled() const override;
    void SetEnabled(bool enabled) override;
    bool IsVisible() const override;
    void SetVisible(bool visible) override;
    void ApplyState(int state) override;
    void ShowState(int state) override;

public slots:
    void OnClicked(bool checked);

private:
    void ShowOnWidget();

    QPointer<QCheckBox> m_checkBox;
};
