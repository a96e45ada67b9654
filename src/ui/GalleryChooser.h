#pragma once

#include "configuration/CGalleryRepositoryEntry.h"
#include "ui_GalleryChooser.h"

#include <QDialog>

#include <functional>
#include <memory>
#include <vector>

class CConfiguration;

// Lists the gallery collections known on this machine: the user opens one (result 1), removes
// one, or picks a collection file elsewhere (result 2); 0 is a cancel.
class GalleryChooser : public QDialog, public Ui::GalleryChooser {
    Q_OBJECT
public:
    // Removes the gallery of a loaded configuration, with windows (the flag) over `parent`.
    using UninstallFunction = std::function<bool(std::shared_ptr<CConfiguration>, bool, QWidget*)>;

    enum eResult {
        eCanceled = 0,
        eListed = 1,
        eCollectionFile = 2,
    };

    // `uninstall` may be empty; the configuration receives the choice.
    GalleryChooser(std::shared_ptr<CConfiguration> configuration, UninstallFunction uninstall,
                   QWidget* parent = nullptr);

    // "Gallery Collections (*.gallerycollection)", for every file dialog that looks for one.
    static QString CollectionFilter();

public slots:
    void OnOk();
    void OnUninstall();
    void OnCancel();
    void OnBrowse();
    void OnItemActivated(QListWidgetItem* item);
    void OnItemSelectionChanged();

private:
    void Fill();
    // The entry of the selected row; a row without one is a fault of this class.
    const CGalleryRepositoryEntry& SelectedEntry() const;

    std::vector<CGalleryRepositoryEntry> m_galleries;
    std::shared_ptr<CConfiguration> m_configuration;
    UninstallFunction m_uninstall;
};
