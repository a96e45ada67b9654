#pragma once

#include "ui/CQtTreeCheckBox.h"

#include <memory>

class GalleryItemWrapper;

// A tree box that stands for one category record: showing a state sets the record's action, and
// an action set from the other tree brings the box back in line.
class CContentChooserCheckBox : public CQtTreeCheckBox {
    Q_OBJECT
public:
    CContentChooserCheckBox(int id, IBoxObserver* observer);
    ~CContentChooserCheckBox() override;

    virtual void SetWrapper(std::shared_ptr<GalleryItemWrapper> wrapper);
    virtual void SetAction(int action);
    // Shows what the record's action means for this box, without changing the action.
    virtual void Synchronise() = 0;

    const std::shared_ptr<GalleryItemWrapper>& GetWrapper() const { return m_wrapper; }

public slots:
    void ItemActionChangedSlot(CContentChooserCheckBox* initiator);

protected:
    std::shared_ptr<GalleryItemWrapper> m_wrapper;
};

// Checked means "there after the change": clearing an installed category removes it, checking an
// uninstalled one adds it.
class CCategoryCheckBox : public CContentChooserCheckBox {
    Q_OBJECT
public:
    using CContentChooserCheckBox::CContentChooserCheckBox;
    void ApplyState(int state) override;
    void ShowState(int state) override;
    void Synchronise() override;
};

// Checked means "update it".
class CUpdateCheckBox : public CContentChooserCheckBox {
    Q_OBJECT
public:
    using CContentChooserCheckBox::CContentChooserCheckBox;
    void ApplyState(int state) override;
    void ShowState(int state) override;
    void Synchronise() override;
};
