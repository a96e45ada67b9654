#include "installation/RunJournal.h"

#include "gallery/CGalleryManifest.h"
#include "foundation/SafeReplace.h"
#include "gallery/CGalleryManifestIO.h"

#include <QByteArray>
#include <QFile>
#include <QList>

#include <cstdio>
#include <vector>

#include <fnmatch.h>

const wchar_t* const RunJournal::FileName = L"run_journal.txt";

namespace {

// Only a record's bare name is ever taken from the journal: nothing outside the folder is touched.
bool IsRecordName(const QByteArray& name)
{
    return !name.contains('/') && name != "." && name != ".." && fnmatch("imsmanifest*.xml", name.constData(), 0) == 0;
}

// Takes `file` (a record, or one waiting beside its place) out of the records to `parked`, a
// hidden name that a later recovery still finds, and adds the files it lists to `released`. The
// parked records go only once the manifest is rebuilt and the files released: a recovery cut
// short finds them again. One that can't be read releases nothing.
void Park(const CZoltaFilePath& file, const CZoltaFilePath& parked, const CGalleryManifest& manifest,
          std::vector<CAtlString>& released, std::vector<CZoltaFilePath>& parkedFiles)
{
    if (parked.Exists())  // left by a recovery cut short
        static_cast<void>(CGalleryManifestIO::CollectRecordFiles(manifest, parked, released));
    if (file.Exists() && std::rename(ToFileSystemEncoding(file.GetPath()).constData(),
                                     ToFileSystemEncoding(parked.GetPath()).constData()) != 0)
        file.Remove();
    if (parked.Exists()) {
        static_cast<void>(CGalleryManifestIO::CollectRecordFiles(manifest, parked, released));
        parkedFiles.push_back(parked);
    }
}

}  // namespace

RunJournal::~RunJournal()
{
    if (m_file)
        std::fclose(m_file);
}

bool RunJournal::Begin(const CZoltaDirectoryPath& uninstallFolder)
{
    if (m_file || !uninstallFolder.Create())
        return false;
    m_path = uninstallFolder.GetFile(FileName);
    m_file = OpenFile(m_path, "ab");
    return m_file != nullptr;
}

void RunJournal::Note(const CZoltaFilePath& record)
{
    if (!m_file)
        return;
    const QByteArray name = ToFileSystemEncoding(record.GetName());
    std::fwrite(name.constData(), 1, static_cast<size_t>(name.size()), m_file);
    std::fputc('\n', m_file);
    std::fflush(m_file);
}

void RunJournal::End()
{
    if (!m_file)
        return;
    std::fclose(m_file);
    m_file = nullptr;
    m_path.Remove();
}

bool RunJournal::Recover(const CZoltaDirectoryPath& uninstallFolder, CGalleryManifest& manifest)
{
    const CZoltaFilePath journal = uninstallFolder.GetFile(FileName);
    QFile file(journal.ToQString());
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QList<QByteArray> names = file.readAll().split('\n');
    file.close();
    // The files those records list may have arrived in part: they go with the records, since
    // nothing else would ever know them as the program's own.
    std::vector<CAtlString> released;
    std::vector<CZoltaFilePath> parked;
    for (const QByteArray& name : names) {
        if (!IsRecordName(name))
            continue;
        const CAtlString recordName = FromFileSystemEncoding(name.constData());
        const CZoltaFilePath record = uninstallFolder.GetFile(recordName);
        Park(record, uninstallFolder.GetFile(L"." + recordName), manifest, released, parked);
        // A record still waiting beside its place when the run was killed has its files in the gallery too.
        Park(ReplacementFileFor(record), uninstallFolder.GetFile(L".new-" + recordName), manifest, released, parked);
    }
    // A rebuild that does not get through leaves the journal for the next open to try again.
    if (SUCCEEDED(CGalleryManifestIO::RebuildFromInstalled(manifest, released))) {
        for (const CZoltaFilePath& record : parked)
            record.Remove();
        journal.Remove();
    }
    return true;
}
