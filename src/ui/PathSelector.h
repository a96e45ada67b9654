#pragma once

#include "libZoltaAtl/CAtlString.h"

class QWidget;

// Picks a folder the user can write to, asking again until one is writable or the user cancels.
class PathSelector {
public:
    PathSelector() = default;

    CAtlString GetPath() const { return m_path; }
    void SetPath(const CAtlString& path) { m_path = path; }

    // True when a writable folder was picked; it is then the path.
    bool Exec(QWidget* parent, const CAtlString& title);

    // Makes the folder when missing and writes a small file into it. Folder flags do not tell
    // the truth for the user running the tool, so an actual write decides.
    static bool IsWritableDirectory(const CAtlString& path);

private:
    CAtlString m_path;
};
