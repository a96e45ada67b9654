#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CQtGalleryThreadBase.h"
#include "gallery/IGalleryManifestOpenObserver.h"
#include "foundation/ZoltaResult.h"

#include <memory>
#include <vector>

struct CGalleryManifest;

// Opens the galleries of one list, one after the other, with the opening steps of start-up, on a
// thread of its own. A gallery that fails is skipped; Cancel() is seen between galleries and at
// the next end tag of the one being parsed.
class CGalleryMultiproc : public CQtGalleryThreadBase, public CGalleryThreadBase, public IGalleryManifestOpenObserver {
public:
    explicit CGalleryMultiproc(std::vector<CAtlString> manifestPaths);
    ~CGalleryMultiproc() override;

    // S_OK, or E_ABORT after a cancel.
    [[nodiscard]] HRESULT Run() override;
    [[nodiscard]] HRESULT OnManifestProgress(float fraction) override;

    // The manifests opened, in the order of the list; read after Wait().
    const std::vector<std::shared_ptr<CGalleryManifest>>& GetOpened() const { return m_opened; }

protected:
    int Work() override { return static_cast<int>(Run()); }

private:
    std::vector<CAtlString> m_paths;
    std::vector<std::shared_ptr<CGalleryManifest>> m_opened;
};
