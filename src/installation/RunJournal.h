#pragma once

#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"

#include <cstdio>

class CGalleryManifest;

// What a run that changes a gallery is in the middle of, kept beside the install records so that
// a run killed at any moment can be completed: the records it wrote may belong to packages
// whose files never all arrived, and the merged manifest may not know of them yet.
class RunJournal {
public:
    static const wchar_t* const FileName;  // "run_journal.txt" in the Uninstall folder

    RunJournal() = default;
    ~RunJournal();
    RunJournal(const RunJournal&) = delete;
    RunJournal& operator=(const RunJournal&) = delete;

    // Starts the journal of a run in `uninstallFolder`; false when it can't be written.
    [[nodiscard]] bool Begin(const CZoltaDirectoryPath& uninstallFolder);
    // Notes a record before it is written. Flushed at once, so a killed process leaves it behind.
    void Note(const CZoltaFilePath& record);
    // Whether the run has a journal that a killed process would leave behind.
    [[nodiscard]] bool IsOpen() const { return m_file != nullptr; }
    // Everything of the run is in the merged manifest: the journal goes.
    void End();

    // After an interrupted run: drops the records it noted and rebuilds `manifest` from the rest,
    // so that those packages count as not installed and a later run installs them again. True
    // when there was a journal.
    static bool Recover(const CZoltaDirectoryPath& uninstallFolder, CGalleryManifest& manifest);

private:
    FILE* m_file = nullptr;
    CZoltaFilePath m_path;
};
