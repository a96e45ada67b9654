#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "installation/IGalleryInstallationObserver.h"
#include "ui_ProgressDlg.h"

#include <QDialog>

#include <memory>

class CInstallationController;
class QtInstallationObserver;

// The window that stands while a change runs: what the engine does, on which item and file,
// how far it has got, and a button that cancels the run and, once it has ended, finishes.
class ProgressDlg : public QDialog, public Ui::ProgressDialog {
    Q_OBJECT
public:
    ProgressDlg(std::shared_ptr<CInstallationController> controller, QWidget* parent = nullptr);

    // What to hand to the controller: its calls reach this window through a queued signal.
    IGalleryInstallationObserver* GetObserver() const;

    // The change has ended: the button becomes "Finish" and the window waits for it.
    void Finish();

    // The text of a state in the label of the action; empty for an unknown one.
    static QString StateText(eGalleryInstallationProgress eProgress);

public slots:
    void OnCancel();
    void ProgressSlot(eGalleryInstallationProgress eProgress, CAtlString itemTitle, CAtlString fileName,
                      int completeCurrent, int completeAll);
    // Escape would close the window behind the running change; only the button ends it.
    void reject() override {}

protected:
    // The window manager's close does nothing: the run decides when the window goes.
    void closeEvent(QCloseEvent* event) override;

private:
    bool m_canceled = false;
    bool m_finished = false;
    std::shared_ptr<CInstallationController> m_controller;
    QtInstallationObserver* m_observer;
};
