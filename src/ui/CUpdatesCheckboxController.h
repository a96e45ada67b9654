#pragma once

#include "ui/CContentChooserCheckboxController.h"

// The tree of updates. A row shows only while its category is installed, has an update, is not
// marked for removal and the source can be reached.
class CUpdatesCheckboxController : public CContentChooserCheckboxController {
public:
    CUpdatesCheckboxController();
    ~CUpdatesCheckboxController() override;

    void OnChange(CHeckBox* box) override;
    void CreateBox(int id, int parentId, QTreeWidgetItem* item) override;
    void AddItem(int id, std::shared_ptr<GalleryItemWrapper> wrapper) override;
    void InitBox(CHeckBox* box) override;
};
