#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "installation/IGalleryInstallationObserver.h"

#include <QElapsedTimer>
#include <QMetaType>
#include <QObject>

#include <memory>

// The worker side of the engine's progress on its way to a window: takes the engine's calls on
// the worker thread, thins them to two a second per stage (a change of stage always passes) and
// emits them as a signal, to be connected queued to a slot on the interface thread.
class QtInstallationObserver : public QObject, public IGalleryInstallationObserver {
    Q_OBJECT
public:
    static constexpr int kIntervalMs = 500;

    explicit QtInstallationObserver(QObject* parent = nullptr);

    void Progress(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item, int percent,
                  int overall) override;

signals:
    void ProgressSignal(eGalleryInstallationProgress eProgress, CAtlString itemTitle, CAtlString fileName,
                        int completeCurrent, int completeAll);

private:
    std::shared_ptr<QElapsedTimer> m_timer;
    eGalleryInstallationProgress m_lastProgress = eGalleryInstallationProgressNone;
};

Q_DECLARE_METATYPE(eGalleryInstallationProgress)
Q_DECLARE_METATYPE(CAtlString)
