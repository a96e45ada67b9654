#include "installation/RunJournal.h"

#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryManifestIO.h"

#include <QByteArray>
#include <QFile>
#include <QList>

#include <fnmatch.h>

const wchar_t* const RunJournal::FileName = L"run_journal.txt";

namespace {

// Only a record's bare name is ever taken from the journal: nothing outside the folder is touched.
bool IsRecordName(const QByteArray& name)
{
    return !name.contains('/') && name != "." && name != ".." && fnmatch("imsmanifest*.xml", name.constData(), 0) == 0;
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
    for (const QByteArray& name : names) {
        if (!IsRecordName(name))
            continue;
        const CZoltaFilePath record = uninstallFolder.GetFile(FromFileSystemEncoding(name.constData()));
        if (record.Exists())  // one that can't be read releases nothing, and goes all the same
            static_cast<void>(CGalleryManifestIO::CollectRecordFiles(manifest, record, released));
        record.Remove();
    }
    // A rebuild that does not get through leaves the journal for the next open to try again.
    if (SUCCEEDED(CGalleryManifestIO::RebuildFromInstalled(manifest, released)))
        journal.Remove();
    return true;
}
