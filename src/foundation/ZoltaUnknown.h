#pragma once

#include "foundation/ZoltaResult.h"

#include <cstdint>

// The reference-counting root of the stream and XML-writer objects. The calling convention is
// that of COM without COM itself: an object starts with one reference, which its creator hands
// over to a CComPtr or an out argument.

struct IID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
using REFIID = const IID&;

class IUnknown {
public:
    virtual ~IUnknown() = default;
    [[nodiscard]] virtual HRESULT QueryInterface(REFIID iid, void** outObject) = 0;
    // Both return the new count.
    virtual std::uint32_t AddRef() = 0;
    virtual std::uint32_t Release() = 0;
};
