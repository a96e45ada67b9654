#pragma once

#include "foundation/ZoltaResult.h"

// Told how far the reading of a manifest has come, after every end tag. A failure returned
// from here stops the parse: that is how a cancel ends a long read.
class IGalleryManifestOpenObserver {
public:
    virtual ~IGalleryManifestOpenObserver() = default;
    // `fraction` is the parser's position over the document's length, from 0 to 1.
    [[nodiscard]] virtual HRESULT OnManifestProgress(float fraction) = 0;
};
