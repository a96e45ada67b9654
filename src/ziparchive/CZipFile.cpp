#include "ziparchive/CZipFile.h"

#include "ziparchive/CZipException.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

CZipFile::~CZipFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

void CZipFile::ThrowLastError() const
{
    CZipException::ThrowErrno(errno, m_path);
}

void CZipFile::Open(const std::string& path, OpenMode mode)
{
    Close();
    m_path = path;
    int flags = O_CLOEXEC;
    switch (mode) {
    case modeRead:
        flags |= O_RDONLY;
        break;
    case modeReadWrite:
        flags |= O_RDWR;
        break;
    case modeCreate:
        // A link standing at the name is replaced, never written through.
        flags |= O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW;
        break;
    }
    m_fd = ::open(path.c_str(), flags, 0666);
    if (m_fd < 0 && errno == ELOOP && mode == modeCreate && ::unlink(path.c_str()) == 0)
        m_fd = ::open(path.c_str(), flags, 0666);
    if (m_fd < 0)
        ThrowLastError();
    // Only a read-only open can succeed on a folder; any other is refused with EISDIR already.
    struct stat info;
    if (mode == modeRead && ::fstat(m_fd, &info) == 0 && S_ISDIR(info.st_mode)) {
        ::close(m_fd);
        m_fd = -1;
        CZipException::ThrowErrno(EISDIR, path);
    }
}

size_t CZipFile::Read(void* buffer, size_t count)
{
    size_t done = 0;
    while (done < count) {
        ssize_t got = ::read(m_fd, static_cast<char*>(buffer) + done, count - done);
        if (got < 0) {
            if (errno == EINTR)
                continue;
            ThrowLastError();
        }
        if (got == 0)
            break;
        done += size_t(got);
    }
    return done;
}

void CZipFile::Write(const void* buffer, size_t count)
{
    size_t done = 0;
    while (done < count) {
        ssize_t put = ::write(m_fd, static_cast<const char*>(buffer) + done, count - done);
        if (put < 0) {
            if (errno == EINTR)
                continue;
            ThrowLastError();
        }
        done += size_t(put);
    }
}

uint64_t CZipFile::Seek(int64_t offset, SeekOrigin origin)
{
    const int whence = origin == begin ? SEEK_SET : origin == current ? SEEK_CUR : SEEK_END;
    off_t at = ::lseek(m_fd, off_t(offset), whence);
    if (at < 0)
        ThrowLastError();
    return uint64_t(at);
}

uint64_t CZipFile::GetPosition() const
{
    off_t at = ::lseek(m_fd, 0, SEEK_CUR);
    if (at < 0)
        ThrowLastError();
    return uint64_t(at);
}

uint64_t CZipFile::GetLength() const
{
    struct stat info;
    if (::fstat(m_fd, &info) != 0)
        ThrowLastError();
    return uint64_t(info.st_size);
}

void CZipFile::SetLength(uint64_t length)
{
    if (::ftruncate(m_fd, off_t(length)) != 0)
        ThrowLastError();
}

void CZipFile::Flush()
{
    // Data reaches the kernel on every write; nothing is buffered here.
}

void CZipFile::Close()
{
    if (m_fd >= 0) {
        ::close(m_fd);
        m_fd = -1;
    }
}
