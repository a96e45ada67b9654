#pragma once

#include "foundation/ZoltaStreamBase.h"

#include <cstddef>
#include <cstdint>

// A stream into a growing heap block: writing at the end appends, writing inside overwrites,
// Seek moves within the bytes written so far. The block can be taken away by the caller.
class CWriteableBufferStream : public CZoltaStreamBase<IStreamOnBuffer> {
public:
    CWriteableBufferStream() = default;

    [[nodiscard]] HRESULT Read(void* buffer, std::uint32_t size, std::uint32_t* outRead) override;
    [[nodiscard]] HRESULT Write(const void* data, std::uint32_t size, std::uint32_t* outWritten) override;
    // A target outside 0..length is refused with E_FAIL and the position stays.
    [[nodiscard]] HRESULT Seek(LARGE_INTEGER offset, std::uint32_t origin, ULARGE_INTEGER* outPosition) override;
    [[nodiscard]] HRESULT Stat(STATSTG* outStat, std::uint32_t flags) override;

    const std::uint8_t* GetData() override { return m_data; }
    std::size_t GetLength() override { return m_length; }
    std::uint8_t* DetachBuffer(std::size_t* outLength) override;

private:
    ~CWriteableBufferStream() override;
    bool Reserve(std::size_t needed);

    std::uint8_t* m_data = nullptr;
    std::size_t m_length = 0;
    std::size_t m_capacity = 0;
    std::size_t m_position = 0;
};

// A new, empty buffer stream in a holder.
CComPtr<IStreamOnBuffer> CreateBufferStream();
