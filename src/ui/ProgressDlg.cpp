#include "ui/ProgressDlg.h"

#include "installation/CGalleryInstallation.h"
#include "installation/CInstallationController.h"
#include "installation/QtInstallationObserver.h"
#include "ui/UiResources.h"

#include <QCloseEvent>
#include <QFileInfo>

ProgressDlg::ProgressDlg(std::shared_ptr<CInstallationController> controller, QWidget* parent)
    : QDialog(parent, Qt::WindowTitleHint | Qt::WindowSystemMenuHint),
      m_controller(std::move(controller)),
      m_observer(new QtInstallationObserver(this))
{
    InitUiResources();
    setupUi(this);
    connect(m_observer, &QtInstallationObserver::ProgressSignal, this, &ProgressDlg::ProgressSlot,
            Qt::QueuedConnection);
}

IGalleryInstallationObserver* ProgressDlg::GetObserver() const
{
    return m_observer;
}

QString ProgressDlg::StateText(eGalleryInstallationProgress eProgress)
{
    switch (eProgress) {
    case eGalleryInstallationProgressDownloading:
        return tr("Downloading...");
    case eGalleryInstallationProgressInstalling:
        return tr("Installing...");
    case eGalleryInstallationProgressUninstalling:
        return tr("Uninstalling...");
    case eGalleryInstallationProgressReading:
        return tr("Reading...");
    case eGalleryInstallationProgressCanceled:
        return tr("Canceled...");
    case eGalleryInstallationProgressComplete:
        return tr("Complete.");
    case eGalleryInstallationProgressFailed:
        return tr("Failed.");
    default:
        return QString();
    }
}

void ProgressDlg::ProgressSlot(eGalleryInstallationProgress eProgress, CAtlString itemTitle, CAtlString fileName,
                               int /*completeCurrent*/, int completeAll)
{
    // After a cancel the label keeps saying so while the engine winds down.
    if (!m_canceled)
        labelAction->setText(StateText(eProgress));
    labelCurrentItem->setText(itemTitle.ToQString());
    labelCurrentFile->setText(QFileInfo(fileName.ToQString()).fileName());
    progressBarTotal->setValue(completeAll);
}

void ProgressDlg::OnCancel()
{
    if (m_finished) {
        m_finished = false;
        accept();
        return;
    }
    if (m_canceled)
        return;
    m_canceled = true;
    labelAction->setText(StateText(eGalleryInstallationProgressCanceled));
    if (m_controller && m_controller->GetInstallation())
        m_controller->GetInstallation()->Cancel();
}

void ProgressDlg::Finish()
{
    cancelButton->show();
    cancelButton->setText(tr("Finish"));
    // Also after a failure: that has been told in a message box by now.
    labelAction->setText(tr("The Gallery changes are complete."));
    labelCurrentItem->clear();
    labelCurrentFile->clear();
    progressBarTotal->setValue(progressBarTotal->maximum());
    m_finished = true;
    exec();
}

void ProgressDlg::closeEvent(QCloseEvent* event)
{
    event->ignore();
}
