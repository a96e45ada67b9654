#include "installation/CGalleryInstallationMetaObserver.h"

#include <cmath>

void CGalleryInstallationMetaObserver::Progress(eGalleryInstallationProgress stage, CGalleryCategory* category,
                                                const wchar_t* item, int percent, int overall)
{
    if (stage == eGalleryInstallationProgressDownloading) {
        m_lastStage = stage;
        m_lastCategory = category;
        m_lastItem = item;
        m_lastPercent = percent;
        m_lastOverall = overall;
    }
    if (m_target)
        m_target->Progress(stage, category, item, percent, overall);
}

void CGalleryInstallationMetaObserver::FailureReason(CGalleryCategory* category, const wchar_t* item,
                                                     const wchar_t* reason)
{
    if (m_target)
        m_target->FailureReason(category, item, reason);
}

void CGalleryInstallationMetaObserver::ReadProgress(unsigned int done, unsigned int total)
{
    long double percent = 0;
    if (total != 0)
        percent = std::round(static_cast<long double>(done) / static_cast<long double>(total) * 100.0L);
    m_lastPercent = static_cast<int>(percent);
    if (m_target)
        m_target->Progress(m_lastStage, m_lastCategory, m_lastItem, m_lastPercent, m_lastOverall);
}
