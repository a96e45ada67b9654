#include "SafeReplace.h"

#include "CZoltaDirectoryPath.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

const wchar_t kSuffix[] = L".curatool-new";

// The rename is only durable once the folder's entry is on the disk too.
void SyncFolder(const CZoltaDirectoryPath& folder)
{
    const int descriptor = ::open(ToFileSystemEncoding(folder.GetPath()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

bool CopyInto(const CZoltaFilePath& source, std::FILE* target)
{
    std::FILE* input = OpenFile(source, "rb");
    if (!input)
        return false;
    char buffer[64 * 1024];
    bool copied = true;
    std::size_t count;
    while (copied && (count = std::fread(buffer, 1, sizeof buffer, input)) > 0)
        copied = std::fwrite(buffer, 1, count, target) == count;
    copied = copied && !std::ferror(input);
    std::fclose(input);
    return copied;
}

}  // namespace

CZoltaFilePath ReplacementFileFor(const CZoltaFilePath& target)
{
    return target.GetFolder().GetFile(CAtlString(L".") + target.GetName() + kSuffix);
}

bool ReplaceFileWith(const CZoltaFilePath& target, const std::function<bool(std::FILE*)>& write)
{
    if (target.IsEmpty())
        return false;
    const CZoltaFilePath temporary = ReplacementFileFor(target);
    std::FILE* file = OpenFile(temporary, "wb");
    if (!file)
        return false;
    bool written = write(file);
    written = std::fflush(file) == 0 && written;
    written = ::fsync(::fileno(file)) == 0 && written;
    written = std::fclose(file) == 0 && written;
    if (!written || !temporary.MoveOnto(target)) {
        const int error = errno;  // the caller may tell why (a full disk)
        temporary.Remove();
        errno = error;
        return false;
    }
    SyncFolder(target.GetFolder());
    return true;
}

bool ReplaceFileFrom(const CZoltaFilePath& target, const CZoltaFilePath& source)
{
    if (!source.Exists())
        return false;
    if (source.IsSameFile(target))
        return true;
    return ReplaceFileWith(target, [&](std::FILE* file) { return CopyInto(source, file); });
}

void RemoveStaleReplacements(const CZoltaDirectoryPath& folder)
{
    QDir directory(folder.ToQString());
    const QStringList names = directory.entryList({QStringLiteral(".*") + QString::fromWCharArray(kSuffix)},
                                                  QDir::Files | QDir::Hidden | QDir::System);
    for (const QString& name : names)
        QFile::remove(directory.filePath(name));
}
