#pragma once

#include "CheckBoxController/CHeckBoxController.h"

#include <memory>

class CContentChooserCheckBox;
class GalleryItemWrapper;
class QTreeWidgetItem;

// The controller of one tree of the content chooser: it makes the boxes for the rows and binds
// each to its category record.
class CContentChooserCheckboxController : public CHeckBoxController {
public:
    CContentChooserCheckboxController();
    ~CContentChooserCheckboxController() override;

    // Makes the box for tree row `item` under box `parentId` (0 for a root).
    virtual void CreateBox(int id, int parentId, QTreeWidgetItem* item) = 0;
    // Binds box `id` to a category record; an empty wrapper does nothing.
    virtual void AddItem(int id, std::shared_ptr<GalleryItemWrapper> wrapper) = 0;
    // Brings one box in line with its record and the controller's options.
    virtual void InitBox(CHeckBox* box) = 0;
    void Clear() override;

    // Keeps `box` as `id`; a known parent takes it as a child and becomes tri-state.
    void AddBox(int id, int parentId, std::shared_ptr<CHeckBox> box);
    // InitBox for every box, in id order.
    void RefreshAll();

    void SetCheckColumn(int column) { m_checkColumn = column; }
    int GetCheckColumn() const { return m_checkColumn; }
    // No connection to the source: nothing new can be had.
    void SetOffline(bool offline) { m_offline = offline; }
    bool IsOffline() const { return m_offline; }
    // Rows of installed categories can't be changed.
    void SetDisableInstalled(bool disable) { m_disableInstalled = disable; }
    bool IsDisableInstalled() const { return m_disableInstalled; }

    // The chooser box `id`; asserts that there is one.
    CContentChooserCheckBox* ChooserBox(int id) const;

protected:
    bool m_disableInstalled = false;
    bool m_offline = false;
    int m_checkColumn = -1;
};
