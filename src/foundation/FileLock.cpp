#include "foundation/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

bool FileLock::TryLock(const CZoltaFilePath& path)
{
    Release();
    const int descriptor = ::open(ToFileSystemEncoding(path.GetPath()).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (descriptor < 0)
        return false;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        ::close(descriptor);
        return false;
    }
    m_descriptor = descriptor;
    return true;
}

void FileLock::Release()
{
    if (m_descriptor < 0)
        return;
    ::close(m_descriptor);  // the lock goes with the last descriptor
    m_descriptor = -1;
}

bool FileLock::IsHeld(const CZoltaFilePath& path)
{
    const int descriptor = ::open(ToFileSystemEncoding(path.GetPath()).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool held = ::flock(descriptor, LOCK_EX | LOCK_NB) != 0;
    ::close(descriptor);
    return held;
}
