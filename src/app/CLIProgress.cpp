#include "CLIProgress.h"

#include <cstdio>

namespace {

// The stage word, and whether it ends its own line.
struct StageWord
{
    const char* text;
    bool endsLine;
};

StageWord WordFor(int stage)
{
    switch (stage) {
    case eGalleryInstallationProgressDownloading: return {"Downloading: ", false};
    case eGalleryInstallationProgressInstalling: return {"Installing: ", false};
    case eGalleryInstallationProgressUninstalling: return {"Uninstalling: ", false};
    case eGalleryInstallationProgressReading: return {"Reading: ", false};
    case eGalleryInstallationProgressCanceled: return {"Canceled", true};
    case eGalleryInstallationProgressComplete: return {"Complete", true};
    case eGalleryInstallationProgressFailed: return {"Failed", true};
    default: return {"", false};
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
        line += CAtlStringA(categoryName->GetString());
        line += ") ";
    }
    if (item)
        line += CAtlStringA(item);
    line += "\n";
    return line;
}

void CLIProgress::Progress(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item,
                           int percent, int overall)
{
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
