#include "app/CLIProgress.h"

#include "installation/CGalleryCategory.h"

#include <cstdio>

namespace {

// The stage word, and whether it ends its own line.
struct StageWord {
    const char* text;
    bool endsLine;
};

StageWord WordFor(int stage)
{
    switch (stage) {
    case eGalleryInstallationProgressDownloading:
        return {"Downloading: ", false};
    case eGalleryInstallationProgressInstalling:
        return {"Installing: ", false};
    case eGalleryInstallationProgressUninstalling:
        return {"Uninstalling: ", false};
    case eGalleryInstallationProgressReading:
        return {"Reading: ", false};
    case eGalleryInstallationProgressCanceled:
        return {"Canceled", true};
    case eGalleryInstallationProgressComplete:
        return {"Complete", true};
    case eGalleryInstallationProgressFailed:
        return {"Failed", true};
    default:
        return {"", false};
    }
}

}  // namespace

CAtlStringA CLIProgress::FormatLine(int stage, const CAtlString* categoryName, const wchar_t* item, int overall)
{
    const StageWord word = WordFor(stage);
    CAtlStringA line(word.text);
    if (word.endsLine)
        line += "\n";
    line.AppendFormat(" \t[%d%%] ", overall);
    if (categoryName) {
        line += "(";
        line += CAtlStringA(EscapeControls(categoryName->GetString()).GetString());
        line += ") ";
    }
    if (item)
        line += CAtlStringA(EscapeControls(item).GetString());
    line += "\n";
    return line;
}

CAtlString CLIProgress::EscapeControls(const wchar_t* text)
{
    CAtlString escaped;
    for (; text && *text; ++text) {
        const wchar_t c = *text;
        if (c < 0x20 || (c >= 0x7F && c <= 0x9F))
            escaped.AppendFormat(L"\\x%02X", static_cast<unsigned>(c));
        else
            escaped += c;
    }
    return escaped;
}

void CLIProgress::FailureReason(CGalleryCategory*, const wchar_t*, const wchar_t* reason)
{
    m_reason = reason;
}

void CLIProgress::Progress(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item,
                           int percent, int overall)
{
    if (stage == eGalleryInstallationProgressFailed) {
        // Complaints go to standard error whatever the verbosity, one line per failed item.
        ++m_failed;
        CAtlString line = L"Failed: " + EscapeControls(item);
        if (!m_reason.IsEmpty())
            line += L": " + EscapeControls(m_reason);
        m_reason.Empty();
        std::fprintf(stderr, "%s\n", CAtlStringA(line.GetString()).GetString());
        std::fflush(stderr);
    }
    // Only finished items are printed, so every line means that a step is done.
    if (!m_verbose || percent < 100)
        return;

    CAtlString name;
    if (category)
        name = CategoryName(*category);
    const CAtlStringA line = FormatLine(stage, category ? &name : nullptr, item, overall);
    std::fputs(line.GetString(), stdout);
    std::fflush(stdout);
}

CAtlString CLIProgress::CategoryName(const CGalleryCategory& category)
{
    // The title in the current language, or the first one when none matches.
    return category.GetTitle();
}
