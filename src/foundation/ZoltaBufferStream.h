#pragma once

#include "ZoltaStreams.h"

#include <cstddef>
#include <cstdint>

// A stream into a growing heap block: writing at the end appends, writing inside overwrites,
// Seek moves within the bytes written so far. The block can be taken away by the caller.
class CWriteableBufferStream : public IStreamOnBuffer
{
public:
    CWriteableBufferStream() = default;
    CWriteableBufferStream(const CWriteableBufferStream&) = delete;
    CWriteableBufferStream& operator=(const CWriteableBufferStream&) = delete;

    HRESULT QueryInterface(REFIID iid, void** outObject) override;
    std::uint32_t AddRef() override;
    std::uint32_t Release() override;

    HRESULT Read(void* buffer, std::uint32_t size, std::uint32_t* outRead) override;
    HRESULT Write(const void* data, std::uint32_t size, std::uint32_t* outWritten) override;
    // A target outside 0..length is refused with E_FAIL and the position stays.
    HRESULT Seek(LARGE_INTEGER offset, std::uint32_t origin, ULARGE_INTEGER* outPosition) override;
    HRESULT SetSize(ULARGE_INTEGER newSize) override;
    HRESULT CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* outRead,
                   ULARGE_INTEGER* outWritten) override;
    HRESULT Commit(std::uint32_t flags) override;
    HRESULT Revert() override;
    HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, std::uint32_t lockType) override;
    HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, std::uint32_t lockType) override;
    HRESULT Stat(STATSTG* outStat, std::uint32_t flags) override;
    HRESULT Clone(IStream** outClone) override;

    const std::uint8_t* GetData() override { return m_data; }
    std::size_t GetLength() override { return m_length; }
    std::uint8_t* DetachBuffer(std::size_t* outLength) override;

private:
    ~CWriteableBufferStream() override;
    bool Reserve(std::size_t needed);

    std::uint32_t m_refs = 1;
    std::uint8_t* m_data = nullptr;
    std::size_t m_length = 0;
    std::size_t m_capacity = 0;
    std::size_t m_position = 0;
};

// A new, empty buffer stream in a holder.
CComPtr<IStreamOnBuffer> CreateBufferStream();
