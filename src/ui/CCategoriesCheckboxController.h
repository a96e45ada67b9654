#pragma once

#include "ui/CContentChooserCheckboxController.h"

class ITotalObserver;

// The tree of categories to add or remove. It keeps sums of sizes and file counts: of what is
// installed, and of what the present choice adds and removes.
class CCategoriesCheckboxController : public CContentChooserCheckboxController {
public:
    explicit CCategoriesCheckboxController(ITotalObserver* totalObserver);
    ~CCategoriesCheckboxController() override;

    void OnChange(CHeckBox* box) override;
    void Clear() override;
    void CreateBox(int id, int parentId, QTreeWidgetItem* item) override;
    void AddItem(int id, std::shared_ptr<GalleryItemWrapper> wrapper) override;
    void InitBox(CHeckBox* box) override;

    void SetSizeColumn(int column) { m_sizeColumn = column; }
    int GetSizeColumn() const { return m_sizeColumn; }
    // Sums the categories to add and to remove afresh and tells the total observer.
    void Recount();
    // Zeroes all six sums.
    void ResetTotals();

    unsigned int GetInstalledSize() const { return m_installedSize; }
    unsigned int GetInstalledCount() const { return m_installedCount; }
    unsigned int GetAddSize() const { return m_addSize; }
    unsigned int GetAddCount() const { return m_addCount; }
    unsigned int GetRemoveSize() const { return m_removeSize; }
    unsigned int GetRemoveCount() const { return m_removeCount; }

private:
    int m_sizeColumn = -1;
    unsigned int m_installedSize = 0;
    unsigned int m_installedCount = 0;
    unsigned int m_addSize = 0;
    unsigned int m_addCount = 0;
    unsigned int m_removeSize = 0;
    unsigned int m_removeCount = 0;
    ITotalObserver* m_totalObserver;
};
