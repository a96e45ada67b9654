#include "foundation/ZoltaBufferStream.h"

#include "libZoltaAtl/ZoltaAssert.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

CWriteableBufferStream::~CWriteableBufferStream()
{
    std::free(m_data);
}

bool CWriteableBufferStream::Reserve(std::size_t needed)
{
    if (needed <= m_capacity)
        return true;
    std::size_t capacity = m_capacity < 256 ? 256 : m_capacity;
    while (capacity < needed)
        capacity *= 2;
    auto* grown = static_cast<std::uint8_t*>(std::realloc(m_data, capacity));
    if (!grown)
        return false;
    m_data = grown;
    m_capacity = capacity;
    return true;
}

HRESULT CWriteableBufferStream::Read(void* buffer, std::uint32_t size, std::uint32_t* outRead)
{
    if (!buffer || !outRead)
        return E_FAIL;
    const std::size_t count = std::min<std::size_t>(size, m_length - m_position);
    if (count != 0)
        std::memcpy(buffer, m_data + m_position, count);
    m_position += count;
    *outRead = static_cast<std::uint32_t>(count);
    return count == 0 ? S_FALSE : S_OK;
}

HRESULT CWriteableBufferStream::Write(const void* data, std::uint32_t size, std::uint32_t* outWritten)
{
    if (outWritten)
        *outWritten = 0;
    if (size == 0)
        return S_OK;
    if (!data)
        return E_FAIL;
    const std::size_t end = m_position + size;
    if (!Reserve(end))
        return E_OUTOFMEMORY;
    std::memcpy(m_data + m_position, data, size);
    m_position = end;
    if (end > m_length)
        m_length = end;
    if (outWritten)
        *outWritten = size;
    return S_OK;
}

HRESULT CWriteableBufferStream::Seek(LARGE_INTEGER offset, std::uint32_t origin, ULARGE_INTEGER* outPosition)
{
    std::int64_t base = 0;
    if (origin == STREAM_SEEK_CUR)
        base = static_cast<std::int64_t>(m_position);
    else if (origin == STREAM_SEEK_END)
        base = static_cast<std::int64_t>(m_length);
    const std::int64_t target = base + offset.Quad();
    if (target < 0 || static_cast<std::uint64_t>(target) > m_length)
        return E_FAIL;
    m_position = static_cast<std::size_t>(target);
    if (outPosition)
        *outPosition = MakeULargeInteger(m_position);
    return S_OK;
}

HRESULT CWriteableBufferStream::Stat(STATSTG* outStat, std::uint32_t)
{
    if (!outStat)
        return E_FAIL;
    outStat->cbSize = MakeULargeInteger(m_length);
    return S_OK;
}

std::uint8_t* CWriteableBufferStream::DetachBuffer(std::size_t* outLength)
{
    if (outLength)
        *outLength = m_length;
    m_length = 0;
    m_capacity = 0;
    m_position = 0;
    return std::exchange(m_data, nullptr);
}

CComPtr<IStreamOnBuffer> CreateBufferStream()
{
    CComPtr<IStreamOnBuffer> holder;
    holder.Attach(new CWriteableBufferStream());
    return holder;
}
