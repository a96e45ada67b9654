#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "ui/CCategoriesCheckboxController.h"
#include "ui/CUpdatesCheckboxController.h"
#include "installation/IInstallationObserver.h"
#include "ui/ITotalObserver.h"

#include <QDialog>
#include <QDialogButtonBox>

#include <memory>
#include <vector>

class About;
class CConfiguration;
class CInstallationController;
class ProxyHandler;
class QTreeWidgetItem;
class ReadProgressDlg;

namespace Ui {
class MainWindow;
}

// The window of an install or update: categories to add or remove, updates on offer, a summary of
// the planned change and the installation folder. "Next >>" carries the change out under a
// progress dialog, and then the application ends: it never comes back to this window.
class MainWindow : public QDialog, public ITotalObserver, public IInstallationObserver {
    Q_OBJECT
public:
    // `sourceAvailable` false: the source can't be reached, so only what is installed can change.
    MainWindow(std::shared_ptr<CInstallationController> controller, std::shared_ptr<CConfiguration> configuration,
               ProxyHandler* proxyHandler, bool sourceAvailable = true, QWidget* parent = nullptr);
    ~MainWindow() override;

    // ITotalObserver: the sums are kept by the controller but shown nowhere.
    void OnTotalsChanged() override {}

    // IInstallationObserver
    void OnOpening(CGalleryInstallation* installation) override;
    void OnOpened(CGalleryInstallation* installation) override;
    void OnOpenFailed(CGalleryInstallation* installation) override;
    void OnRunning(CGalleryInstallation* installation) override {}
    void OnRunComplete(CGalleryInstallation* installation) override {}
    void OnRunCanceled(CGalleryInstallation* installation) override;
    void OnRunFailed(CGalleryInstallation* installation) override;

    bool IsOffline() const { return m_offline; }
    // The user had everything removed and the gallery's records deleted: it is not to be
    // registered again.
    bool RecordsRemoved() const { return m_recordsRemoved; }

public slots:
    void OnOk();
    void OnCancel();
    void OnUpdate();
    void OnProxyOptions();
    void OnAbout();
    void OnBrowse();
    void OnCategoryClicked(QTreeWidgetItem* item, int column);
    void OnUpdateClicked(QTreeWidgetItem* item, int column);

protected:
    // The space key never toggles a row: a click is the one way to change a mark.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildTrees();
    void RefreshSummary();
    void SetOnline(bool online);
    // Reads the gallery's state again under the read dialog; OnOpened rebuilds the trees.
    void Reopen();
    // Drops every planned change and shows the trees as they now stand.
    void ClearAndRefresh();
    // Whether the planned change leaves nothing installed, so that the gallery's own records
    // may go as well.
    bool RemovesEverything() const;
    void EnableOk();
    QPushButton* Button(QDialogButtonBox::StandardButton which) const;

    // The form's widgets, under the object names the style sheet and the tests use.
    std::unique_ptr<Ui::MainWindow> m_ui;
    CCategoriesCheckboxController m_categoriesController;
    CUpdatesCheckboxController m_updatesController;
    std::shared_ptr<CInstallationController> m_controller;
    std::shared_ptr<CConfiguration> m_configuration;
    ProxyHandler* m_proxyHandler;
    bool m_restoreSelection = false;
    bool m_offline = false;
    bool m_recordsRemoved = false;
    std::vector<CAtlString> m_savedSelection;
    About* m_about = nullptr;
    ReadProgressDlg* m_readProgress = nullptr;
};
