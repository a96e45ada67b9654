#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "libZoltaAtl/CAtlStringA.h"
#include "installation/IGalleryInstallationObserver.h"

// The console's view of an installation run: under -verbose, one line on standard output per
// finished item; always, one line on standard error per failed item, with its reason when the
// engine gave one. This and the literal lines of the work flows are all the logging there is.
// Text that came from a source is printed with its control characters escaped.
class CLIProgress : public IGalleryInstallationObserver {
public:
    CLIProgress() = default;

    void SetVerbose(bool verbose) { m_verbose = verbose; }
    bool IsVerbose() const { return m_verbose; }

    void Progress(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item, int percent,
                  int overall) override;
    void FailureReason(CGalleryCategory* category, const wchar_t* item, const wchar_t* reason) override;

    // Items that failed so far.
    int GetFailedCount() const { return m_failed; }

    // `text` with each control character (C0, DEL, C1) as "\xHH", so that no name from a source
    // can move the cursor, clear the screen or start a line of its own.
    static CAtlString EscapeControls(const wchar_t* text);

    // The text printed for one finished item, line end included. categoryName null leaves the
    // parentheses out. Stages 5 to 7 put their word on a line of its own.
    static CAtlStringA FormatLine(int stage, const CAtlString* categoryName, const wchar_t* item, int overall);

private:
    // The category's display name in the default language.
    static CAtlString CategoryName(const CGalleryCategory& category);

    bool m_verbose = false;
    int m_failed = 0;
    CAtlString m_reason;  // told for the next Failed event
};
