#include "installation/QtInstallationObserver.h"

#include "installation/CGalleryCategory.h"

QtInstallationObserver::QtInstallationObserver(QObject* parent)
    : QObject(parent)
{
    static const bool registered = [] {
        qRegisterMetaType<eGalleryInstallationProgress>("eGalleryInstallationProgress");
        qRegisterMetaType<CAtlString>("CAtlString");
        return true;
    }();
    (void)registered;
}

void QtInstallationObserver::Progress(eGalleryInstallationProgress stage, CGalleryCategory* category,
                                      const wchar_t* item, int percent, int overall)
{
    if (!m_timer) {
        m_timer = std::make_shared<QElapsedTimer>();
        m_timer->start();
    } else if (m_timer->elapsed() < kIntervalMs && stage == m_lastProgress)
        return;
    m_timer->restart();
    m_lastProgress = stage;
    // Copies of their own: the strings go to another thread.
    const CAtlString fileName(item ? item : L"");
    const CAtlString title = category ? CAtlString(category->GetTitle().GetString()) : CAtlString();
    emit ProgressSignal(stage, title, fileName, percent, overall);
}
