#include "ui/PathSelector.h"

#include "foundation/CZoltaDirectoryPath.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>

bool PathSelector::Exec(QWidget* parent, const CAtlString& title)
{
    for (;;) {
        const QString chosen =
            QFileDialog::getExistingDirectory(parent, title.ToQString(), m_path.ToQString(), QFileDialog::ShowDirsOnly);
        m_path = CAtlString(chosen);
        if (m_path.IsEmpty())
            return false;
        if (IsWritableDirectory(m_path))
            return true;
        QMessageBox::warning(parent, QStringLiteral("Curatool"),
                             QObject::tr("You must have write permissions for this directory."), QMessageBox::Ok);
    }
}

bool PathSelector::IsWritableDirectory(const CAtlString& path)
{
    const CZoltaDirectoryPath directory(path);
    if (!directory.Exists())
        QDir().mkpath(directory.ToQString());  // a failure shows in the write below

    QFile probe(directory.GetUniqueFile(L"test", L".tmp").ToQString());
    if (!probe.open(QIODevice::ReadWrite))
        return false;
    const bool written = probe.write("test", 4) == 4;
    probe.close();
    probe.remove();
    return written;
}
