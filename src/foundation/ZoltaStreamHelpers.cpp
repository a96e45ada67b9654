#include "foundation/ZoltaStreamHelpers.h"

#include <cwchar>

std::uint32_t GetPosition(IStream* stream)
{
    if (!stream)
        return 0;
    ULARGE_INTEGER position{};
    if (FAILED(stream->Seek(MakeLargeInteger(0), STREAM_SEEK_CUR, &position)))
        return 0;
    return position.LowPart;
}

HRESULT SetPosition(IStream* stream, std::uint32_t offset)
{
    if (!stream)
        return E_POINTER;
    return stream->Seek(MakeLargeInteger(offset), STREAM_SEEK_SET, nullptr);
}

HRESULT WriteWord(IStream* stream, std::uint32_t value)
{
    if (!stream)
        return E_POINTER;
    return stream->Write(&value, sizeof value, nullptr);
}

HRESULT WriteBytes(IStream* stream, const void* data, std::uint32_t size)
{
    if (!stream)
        return E_POINTER;
    if (!data && size != 0)
        return E_INVALIDARG;
    if (size == 0)
        return S_OK;
    HRESULT result = stream->Write(data, size, nullptr);
    if (FAILED(result))
        return result;
    static const std::uint8_t zeros[3] = {0, 0, 0};
    const std::uint32_t tail = size % 4;
    if (tail != 0)
        result = stream->Write(zeros, tail, nullptr);
    return result;
}

HRESULT PatchWord(IStream* stream, std::uint32_t base, std::uint32_t offset, std::uint32_t value)
{
    if (!stream)
        return E_POINTER;
    const std::uint32_t resume = GetPosition(stream);
    HRESULT result = SetPosition(stream, base + offset);
    if (SUCCEEDED(result))
        result = WriteWord(stream, value);
    const HRESULT back = SetPosition(stream, resume);
    return FAILED(result) ? result : back;
}

HRESULT PatchString(IStream* stream, std::uint32_t base, std::uint32_t offset, const wchar_t* text)
{
    if (!stream)
        return E_POINTER;
    const wchar_t* value = text ? text : L"";
    const HRESULT result = PatchWord(stream, base, offset, GetPosition(stream));
    if (FAILED(result))
        return result;
    const std::size_t units = std::wcslen(value) + 1;
    return WriteBytes(stream, value, static_cast<std::uint32_t>(units * sizeof(wchar_t)));
}
