#include "ui/WaitForCDDlg.h"

#include "configuration/CConfiguration.h"
#include "installation/CInstallationController.h"
#include "ui/GalleryChooser.h"
#include "ui/PanelSetup.h"
#include "ui/UiResources.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <QFileDialog>
#include <QTimer>

namespace {

const int kPollIntervalMs = 2000;

}  // namespace

WaitForCDDlg::WaitForCDDlg(std::shared_ptr<CConfiguration> configuration, const CAtlString& source, QWidget* parent)
    : QDialog(parent),
      m_configuration(std::move(configuration)),
      m_timer(nullptr),
      m_sourceDir(source)
{
    InitUiResources();
    setupUi(this);
    setWindowTitle(tr("ZOLTA Curatool"));
    ZOLTA_ASSERT_TEXT(m_configuration, "px != 0");
    const CConfiguration& collection = *m_configuration;
    aboutWidget->SetBackground(PanelSetup::Background(collection));
    PanelSetup::Arrange(*aboutWidget, collection, collection.GetApplication()->GetTextOffsetY());

    m_timer = new QTimer(this);
    m_timer->setInterval(kPollIntervalMs);
    connect(m_timer, &QTimer::timeout, this, &WaitForCDDlg::OnTimer);
    connect(buttonBrowse, &QPushButton::clicked, this, &WaitForCDDlg::OnBrowse);

    setMinimumSize(300, 100);
    aboutWidget->setStyleSheet(QStringLiteral("#editAbout { font: 10pt }"));
    aboutWidget->SetText(QStringLiteral("<center><br/><br/>") + tr("Please insert Gallery CD: ") +
                         m_sourceDir.ToQString().toHtmlEscaped() + QStringLiteral("</center>"));
}

int WaitForCDDlg::Exec()
{
    show();
    adjustSize();
    setFixedSize(size());
    m_timer->start();
    const int result = exec();
    m_timer->stop();
    return result;
}

void WaitForCDDlg::OnTimer()
{
    // Stopped while looking, so that a slow drive never piles up ticks.
    m_timer->stop();
    m_found = CInstallationController::LocateGalleryData(m_sourceDir, m_configuration->GetGallery()->GetName());
    if (!m_found.IsEmpty())
        accept();
    else
        m_timer->start();
}

void WaitForCDDlg::OnBrowse()
{
    m_timer->stop();
    const QString file = QFileDialog::getOpenFileName(this, QString(), m_configuration->GetDirectory().ToQString(),
                                                      GalleryChooser::CollectionFilter());
    if (!file.isEmpty() && m_configuration->OpenCollectionFile(CAtlString(file))) {
        accept();
        return;
    }
    m_timer->start();
}
