#include "ziparchive/CZipMemFile.h"

#include "ziparchive/CZipException.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

CZipMemFile::CZipMemFile(const void* data, size_t size)
    : m_data(static_cast<unsigned char*>(const_cast<void*>(data))),
      m_length(size),
      m_capacity(size),
      m_owned(false)
{}

CZipMemFile::~CZipMemFile()
{
    if (m_owned)
        std::free(m_data);
}

void CZipMemFile::Reserve(size_t capacity)
{
    if (!m_owned)
        CZipException::ThrowErrno(EACCES);
    if (capacity <= m_capacity)
        return;
    size_t grown = m_capacity < 4096 ? 4096 : m_capacity;
    while (grown < capacity)
        grown *= 2;
    auto* block = static_cast<unsigned char*>(std::realloc(m_data, grown));
    if (!block)
        CZipException::Throw(CZipException::memError);
    m_data = block;
    m_capacity = grown;
}

size_t CZipMemFile::Read(void* buffer, size_t count)
{
    // An empty read may come with no buffer at all (an empty central directory has none).
    if (count == 0 || m_position >= m_length)
        return 0;
    const size_t available = m_length - m_position;
    if (count > available)
        count = available;
    std::memcpy(buffer, m_data + m_position, count);
    m_position += count;
    return count;
}

void CZipMemFile::Write(const void* buffer, size_t count)
{
    if (count == 0)
        return;
    if (count > SIZE_MAX - m_position)
        CZipException::ThrowErrno(EFBIG);
    const size_t writtenEnd = m_position + count;
    Reserve(writtenEnd);
    if (m_position > m_length)
        std::memset(m_data + m_length, 0, m_position - m_length);
    std::memcpy(m_data + m_position, buffer, count);
    m_position = writtenEnd;
    if (writtenEnd > m_length)
        m_length = writtenEnd;
}

uint64_t CZipMemFile::Seek(int64_t offset, SeekOrigin origin)
{
    int64_t base = origin == begin ? 0 : origin == current ? int64_t(m_position) : int64_t(m_length);
    int64_t target = base + offset;
    if (target < 0)
        CZipException::ThrowErrno(EINVAL);
    m_position = size_t(target);
    return m_position;
}

void CZipMemFile::SetLength(uint64_t length)
{
    if (length > m_capacity)
        Reserve(size_t(length));
    if (length > m_length)
        std::memset(m_data + m_length, 0, size_t(length) - m_length);
    m_length = size_t(length);
    if (m_position > m_length)
        m_position = m_length;
}

unsigned char* CZipMemFile::Detach(size_t& length)
{
    if (!m_owned) {
        // A view is copied out, so the caller always gets a block it may free.
        auto* copy = static_cast<unsigned char*>(std::malloc(m_length ? m_length : 1));
        if (!copy)
            CZipException::Throw(CZipException::memError);
        if (m_length)
            std::memcpy(copy, m_data, m_length);
        length = m_length;
        return copy;
    }
    if (!m_data)
        Reserve(1);
    unsigned char* block = m_data;
    length = m_length;
    m_data = nullptr;
    m_length = m_capacity = m_position = 0;
    return block;
}
