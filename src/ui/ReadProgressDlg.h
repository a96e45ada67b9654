#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "installation/IGalleryInstallationObserver.h"

#include <QDialog>

#include <memory>

namespace Ui {
class ReadProgress;
}
class CConfiguration;
class QtInstallationObserver;

// The small frameless window that stands while the gallery's state is read; it shows the
// collection's panel, so it is also the collection's splash window.
class ReadProgressDlg : public QDialog {
    Q_OBJECT
public:
    explicit ReadProgressDlg(std::shared_ptr<CConfiguration> configuration, QWidget* parent = nullptr);
    ~ReadProgressDlg() override;

    IGalleryInstallationObserver* GetObserver() const;
    // In the middle of the screen, in front.
    void ShowCentred();

public slots:
    void ProgressSlot(eGalleryInstallationProgress eProgress, CAtlString itemTitle, CAtlString fileName,
                      int completeCurrent, int completeAll);
    // No way out by the keyboard either: the read ends the window.
    void reject() override {}

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    std::unique_ptr<Ui::ReadProgress> m_form;
    QtInstallationObserver* m_observer;
};
