#pragma once

#include "foundation/CComPtr.h"
#include "foundation/ZoltaUnknown.h"

#include <cstddef>
#include <cstdint>

// Byte streams in the COM manner. 64-bit positions travel as two 32-bit halves, low half first.

struct LARGE_INTEGER {
    std::uint32_t LowPart;
    std::int32_t HighPart;

    constexpr std::int64_t Quad() const
    {
        return static_cast<std::int64_t>((static_cast<std::uint64_t>(static_cast<std::uint32_t>(HighPart)) << 32) |
                                         LowPart);
    }
};

struct ULARGE_INTEGER {
    std::uint32_t LowPart;
    std::uint32_t HighPart;

    constexpr std::uint64_t Quad() const { return (static_cast<std::uint64_t>(HighPart) << 32) | LowPart; }
};

constexpr LARGE_INTEGER MakeLargeInteger(std::int64_t value)
{
    const auto bits = static_cast<std::uint64_t>(value);
    return {static_cast<std::uint32_t>(bits), static_cast<std::int32_t>(static_cast<std::uint32_t>(bits >> 32))};
}

constexpr ULARGE_INTEGER MakeULargeInteger(std::uint64_t value)
{
    return {static_cast<std::uint32_t>(value), static_cast<std::uint32_t>(value >> 32)};
}

// Seek origins; any other value counts as STREAM_SEEK_SET.
enum : std::uint32_t {
    STREAM_SEEK_SET = 0,
    STREAM_SEEK_CUR = 1,
    STREAM_SEEK_END = 2,
};

// What Stat reports: the size of the stream.
struct STATSTG {
    ULARGE_INTEGER cbSize;
};

class ISequentialStream : public IUnknown {
public:
    // S_OK when something was read, S_FALSE when nothing was; the count goes to *outRead.
    [[nodiscard]] virtual HRESULT Read(void* buffer, std::uint32_t size, std::uint32_t* outRead) = 0;
    // A short write is E_FAIL; outWritten may be null.
    [[nodiscard]] virtual HRESULT Write(const void* data, std::uint32_t size, std::uint32_t* outWritten) = 0;
};

class IStream : public ISequentialStream {
public:
    // outPosition may be null.
    [[nodiscard]] virtual HRESULT Seek(LARGE_INTEGER offset, std::uint32_t origin, ULARGE_INTEGER* outPosition) = 0;
    [[nodiscard]] virtual HRESULT SetSize(ULARGE_INTEGER newSize) = 0;
    [[nodiscard]] virtual HRESULT CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* outRead,
                                         ULARGE_INTEGER* outWritten) = 0;
    [[nodiscard]] virtual HRESULT Commit(std::uint32_t flags) = 0;
    [[nodiscard]] virtual HRESULT Revert() = 0;
    [[nodiscard]] virtual HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, std::uint32_t lockType) = 0;
    [[nodiscard]] virtual HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, std::uint32_t lockType) = 0;
    [[nodiscard]] virtual HRESULT Stat(STATSTG* outStat, std::uint32_t flags) = 0;
    [[nodiscard]] virtual HRESULT Clone(IStream** outClone) = 0;
};

// A stream whose bytes live in one heap block that the caller can look at or take away.
class IStreamOnBuffer : public IStream {
public:
    // The bytes written so far; null while nothing has been.
    virtual const std::uint8_t* GetData() = 0;
    virtual std::size_t GetLength() = 0;
    // Hands the block to the caller, who frees it with std::free; the stream is empty afterwards.
    virtual std::uint8_t* DetachBuffer(std::size_t* outLength) = 0;
};
