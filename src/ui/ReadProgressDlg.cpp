#include "ui/ReadProgressDlg.h"

#include "configuration/CConfiguration.h"
#include "ui/PanelSetup.h"
#include "ui/ProgressDlg.h"
#include "installation/QtInstallationObserver.h"
#include "ui/TranslatedHtml.h"
#include "ui_ReadProgressDlg.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <QCloseEvent>
#include <QScreen>

ReadProgressDlg::ReadProgressDlg(std::shared_ptr<CConfiguration> configuration, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint),
      m_form(std::make_unique<Ui::ReadProgress>()),
      m_observer(new QtInstallationObserver(this))
{
    m_form->setupUi(this);
    connect(m_observer, &QtInstallationObserver::ProgressSignal, this, &ReadProgressDlg::ProgressSlot,
            Qt::QueuedConnection);

    ZOLTA_ASSERT_TEXT(configuration, "px != 0");
    const CConfiguration& collection = *configuration;
    AboutWidget& panel = *m_form->aboutWidget;
    panel.SetBackground(PanelSetup::Background(collection));
    if (!collection.GetApplication()->GetShowText())
        return;
    const QString text = PanelSetup::ReadText(collection, collection.GetApplication()->GetSplashText());
    PanelSetup::Arrange(panel, collection, collection.GetApplication()->GetTextOffsetY());
    if (!text.isEmpty())
        panel.SetText(TranslateHtml(text));
}

ReadProgressDlg::~ReadProgressDlg() = default;

IGalleryInstallationObserver* ReadProgressDlg::GetObserver() const
{
    return m_observer;
}

void ReadProgressDlg::ShowCentred()
{
    // As large as the collection's panel and text want, not the form's bare minimum.
    adjustSize();
    QScreen* screen = this->screen();
    if (screen) {
        QRect frame = frameGeometry();
        frame.moveCenter(screen->availableGeometry().center());
        move(frame.topLeft());
    }
    show();
    activateWindow();
    raise();
}

void ReadProgressDlg::ProgressSlot(eGalleryInstallationProgress eProgress, CAtlString, CAtlString, int, int)
{
    // Nothing is removed while a gallery is read: that state has no text here.
    m_form->labelAction->setText(
        eProgress == eGalleryInstallationProgressUninstalling ? QString() : ProgressDlg::StateText(eProgress));
}

void ReadProgressDlg::closeEvent(QCloseEvent* event)
{
    event->ignore();
}
