#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <QObject>

class CGalleryCategory;
class CContentChooserCheckBox;

// One category record (not owned) as both trees of the chooser see it. A change of the record's
// action is announced, with the box that made it, so that the other tree's box follows.
class GalleryItemWrapper : public QObject {
    Q_OBJECT
public:
    explicit GalleryItemWrapper(CGalleryCategory* category);
    ~GalleryItemWrapper() override;

    CGalleryCategory* GetCategory() const { return m_category; }
    CAtlString GetTitle() const;
    bool IsInstalled() const;
    bool HasUpdate() const;
    int GetAction() const;
    // Stores a different action and announces it; an equal one does nothing.
    void SetAction(int action, CContentChooserCheckBox* initiator);
    // Bytes on disk, and files on disk, as the categories document gives them.
    unsigned int GetDiskSize() const;
    unsigned int GetFileCount() const;

signals:
    void ActionChangedSignal(CContentChooserCheckBox* initiator);

private:
    CGalleryCategory* m_category;
};
