#pragma once

#include "CAtlString.h"
#include "CAtlStringA.h"
#include "IGalleryInstallationObserver.h"

// The console's view of an installation run: under -verbose, one line on standard output per
// finished item. This and the literal lines of the work flows are all the logging there is.
class CLIProgress : public IGalleryInstallationObserver
{
public:
    CLIProgress() = default;

    void SetVerbose(bool verbose) { m_verbose = verbose; }
    bool IsVerbose() const { return m_verbose; }

    void Progress(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item,
                  int percent, int overall) override;

    // The text printed for one finished item, line end included. categoryName null leaves the
    // parentheses out. Stages 5 to 7 put their word on a line of its own.
    static CAtlStringA FormatLine(int stage, const CAtlString* categoryName, const wchar_t* item, int overall);

private:
    // The category's display name in the default language.
    static CAtlString CategoryName(const CGalleryCategory& category);

    bool m_verbose = false;
};
