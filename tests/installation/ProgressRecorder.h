#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "installation/CGalleryCategory.h"
#include "installation/IGalleryInstallationObserver.h"

#include <mutex>
#include <string>
#include <vector>

namespace curatool::test {

// Keeps every progress event the engine sends, for checks of order and arithmetic.
class ProgressRecorder : public IGalleryInstallationObserver {
public:
    struct Event {
        int stage;
        std::string category;
        std::string item;
        int percent;
        int overall;
    };

    void Progress(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item, int percent,
                  int overall) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_events.push_back({stage, category ? category->GetId().ToQString().toStdString() : std::string(),
                            item ? CAtlString(item).ToQString().toStdString() : std::string(), percent, overall});
    }

    std::vector<Event> Events() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_events;
    }

    std::vector<Event> OfStage(int stage) const
    {
        std::vector<Event> result;
        for (const Event& event : Events())
            if (event.stage == stage)
                result.push_back(event);
        return result;
    }

    void Clear()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_events.clear();
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Event> m_events;
};

}  // namespace curatool::test
