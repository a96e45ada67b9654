#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "network/FetchUrl.h"
#include "installation/IGalleryInstallationObserver.h"

class IProxyObserver;

// The engine's progress relay, the one place all stages pass. Events go on unchanged to the
// target; the last download event is remembered, so that byte progress from the fetch moves
// that file's bar while its stage line stays.
class CGalleryInstallationMetaObserver : public IByteProgressObserver {
public:
    CGalleryInstallationMetaObserver() = default;
    ~CGalleryInstallationMetaObserver() override = default;

    void SetProxyObserver(IProxyObserver* observer) { m_proxyObserver = observer; }
    IProxyObserver* GetProxyObserver() const { return m_proxyObserver; }
    void SetTarget(IGalleryInstallationObserver* observer) { m_target = observer; }
    IGalleryInstallationObserver* GetTarget() const { return m_target; }

    void Progress(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item, int percent,
                  int overall);
    void FailureReason(CGalleryCategory* category, const wchar_t* item, const wchar_t* reason);
    // Bytes of the running fetch.
    void ReadProgress(unsigned int done, unsigned int total) override;

private:
    IProxyObserver* m_proxyObserver = nullptr;
    IGalleryInstallationObserver* m_target = nullptr;
    eGalleryInstallationProgress m_lastStage = eGalleryInstallationProgressNone;
    CGalleryCategory* m_lastCategory = nullptr;
    CAtlString m_lastItem;
    int m_lastPercent = 0;
    int m_lastOverall = 0;
};
