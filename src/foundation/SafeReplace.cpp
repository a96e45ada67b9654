#include "foundation/SafeReplace.h"

#include "foundation/CZoltaDirectoryPath.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <thread>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const wchar_t kSuffix[] = L".curatool-new";

thread_local ReplacementBatch* t_openBatch = nullptr;

constexpr std::size_t kSyncsInFlight = 16;

// The rename is only durable once the folder's entry is on the disk too.
void SyncFolder(const QByteArray& folder)
{
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

void SyncFolder(const CZoltaDirectoryPath& folder)
{
    SyncFolder(ToFileSystemEncoding(folder.GetPath()));
}

QByteArray FolderOf(const QByteArray& path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash > 0 ? path.left(slash) : QByteArray(slash == 0 ? "/" : ".");
}

// Only the bytes and the size have to be on the disk before the rename: the times may be lost.
bool SyncData(const QByteArray& path)
{
    const int descriptor = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = ::fdatasync(descriptor) == 0;
    return ::close(descriptor) == 0 && synced;
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

// Copies into a file made anew at `target`: whatever stood there goes first, and the open
// refuses to follow a link that appears in the meantime.
bool CopyIntoNewFile(const QByteArray& source, const QByteArray& target)
{
    const int input = ::open(source.constData(), O_RDONLY | O_CLOEXEC);
    if (input < 0)
        return false;
    if (::unlink(target.constData()) != 0 && errno != ENOENT) {
        ::close(input);
        return false;
    }
    const int output = ::open(target.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (output < 0) {
        ::close(input);
        return false;
    }
    char buffer[64 * 1024];
    bool copied = true;
    for (;;) {
        const ssize_t got = ::read(input, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            copied = got == 0;
            break;
        }
        for (ssize_t written = 0; copied && written < got;) {
            const ssize_t put = ::write(output, buffer + written, static_cast<size_t>(got - written));
            if (put < 0 && errno == EINTR)
                continue;
            copied = put > 0;
            written += put > 0 ? put : 0;
        }
        if (!copied)
            break;
    }
    const int error = errno;
    ::close(input);
    copied = ::close(output) == 0 && copied;
    if (!copied) {
        ::unlink(target.constData());
        errno = error;
    }
    return copied;
}

// Syncs the files waiting beside their targets, several at once: the disk's cache is flushed
// once for all the syncs in flight, where one after the other each waits for a flush of its own.
std::vector<char> SyncAll(const std::vector<std::pair<QByteArray, QByteArray>>& waiting)
{
    std::vector<char> synced(waiting.size(), 0);
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        for (std::size_t i; (i = next++) < waiting.size();)
            synced[i] = SyncData(waiting[i].first) ? 1 : 0;
    };
    std::vector<std::thread> helpers;
    const std::size_t count = std::min<std::size_t>(kSyncsInFlight, waiting.size()) - 1;
    for (std::size_t t = 0; t < count; ++t)
        helpers.emplace_back(work);
    work();
    for (std::thread& helper : helpers)
        helper.join();
    return synced;
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
    // Synced above: the rename is all that is left.
    if (!written || std::rename(ToFileSystemEncoding(temporary.GetPath()).constData(),
                                ToFileSystemEncoding(target.GetPath()).constData()) != 0)
    {
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

bool ReplaceFileByMove(const CZoltaFilePath& target, const CZoltaFilePath& source)
{
    if (target.IsEmpty() || source.IsEmpty())
        return false;
    ReplacementBatch* batch = ReplacementBatch::Open();
    // A second replacement of a waiting target would take the place of the first beside it.
    if (batch && batch->Holds(target) && !batch->Commit())
        return false;
    const QByteArray from = ToFileSystemEncoding(source.GetPath());
    const CZoltaFilePath temporary = ReplacementFileFor(target);
    const QByteArray beside = ToFileSystemEncoding(temporary.GetPath());
    struct stat status {};
    if (::lstat(from.constData(), &status) != 0 || !S_ISREG(status.st_mode) ||
        std::rename(from.constData(), beside.constData()) != 0)
        return ReplaceFileFrom(target, source);
    const QByteArray to = ToFileSystemEncoding(target.GetPath());
    if (batch)
        return batch->Add(beside, to);
    if (!SyncData(beside) || std::rename(beside.constData(), to.constData()) != 0) {
        const int error = errno;
        temporary.Remove();
        errno = error;
        return false;
    }
    SyncFolder(target.GetFolder());
    return true;
}

bool MoveOrCopyFile(const CZoltaFilePath& source, const CZoltaFilePath& target, bool move)
{
    if (source.IsEmpty() || target.IsEmpty())
        return false;
    const QByteArray from = ToFileSystemEncoding(source.GetPath());
    const QByteArray to = ToFileSystemEncoding(target.GetPath());
    if (move) {
        if (std::rename(from.constData(), to.constData()) == 0)
            return true;
        if (errno != EXDEV)
            return false;
    }
    return CopyIntoNewFile(from, to);
}

void RemoveStaleReplacements(const CZoltaDirectoryPath& folder)
{
    QDir directory(folder.ToQString());
    const QStringList names = directory.entryList({QStringLiteral(".*") + QString::fromWCharArray(kSuffix)},
                                                  QDir::Files | QDir::Hidden | QDir::System);
    for (const QString& name : names)
        QFile::remove(directory.filePath(name));
}

ReplacementBatch::ReplacementBatch()
    : m_outer(t_openBatch)
{
    t_openBatch = this;
}

ReplacementBatch::~ReplacementBatch()
{
    static_cast<void>(Commit());
    t_openBatch = m_outer;
}

ReplacementBatch* ReplacementBatch::Open()
{
    return t_openBatch;
}

bool ReplacementBatch::Holds(const CZoltaFilePath& target) const
{
    const QByteArray path = ToFileSystemEncoding(target.GetPath());
    return std::any_of(m_waiting.begin(), m_waiting.end(), [&](const auto& entry) { return entry.second == path; });
}

bool ReplacementBatch::Add(const QByteArray& beside, const QByteArray& target)
{
    // The writing starts now, in the background: by the commit little is left to wait for.
    const int descriptor = ::open(beside.constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        ::unlink(beside.constData());
        return false;
    }
    ::sync_file_range(descriptor, 0, 0, SYNC_FILE_RANGE_WRITE);
    ::close(descriptor);
    m_waiting.emplace_back(beside, target);
    return true;
}

bool ReplacementBatch::Commit()
{
    if (m_waiting.empty())
        return true;
    const std::vector<char> synced = SyncAll(m_waiting);
    bool settled = true;
    std::vector<QByteArray> folders;
    for (std::size_t i = 0; i < m_waiting.size(); ++i) {
        const auto& [beside, target] = m_waiting[i];
        if (!synced[i] || std::rename(beside.constData(), target.constData()) != 0) {
            settled = false;
            continue;
        }
        const QByteArray folder = FolderOf(target);
        if (std::find(folders.begin(), folders.end(), folder) == folders.end())
            folders.push_back(folder);
    }
    m_waiting.clear();
    for (const QByteArray& folder : folders)
        SyncFolder(folder);
    return settled;
}
