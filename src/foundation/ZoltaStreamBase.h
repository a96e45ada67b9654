#pragma once

#include "libZoltaAtl/ZoltaAssert.h"
#include "foundation/ZoltaStreams.h"

#include <cstdint>

// What every stream of the system shares: a plain reference count that deletes the stream with
// the last Release (no interface queries), and the stream operations nobody here needs.
template <class Interface>
class CZoltaStreamBase : public Interface {
public:
    CZoltaStreamBase() = default;
    CZoltaStreamBase(const CZoltaStreamBase&) = delete;
    CZoltaStreamBase& operator=(const CZoltaStreamBase&) = delete;

    [[nodiscard]] HRESULT QueryInterface(REFIID, void** outObject) override
    {
        if (outObject)
            *outObject = nullptr;
        return E_NOTIMPL;
    }
    std::uint32_t AddRef() override { return ++m_refs; }
    std::uint32_t Release() override
    {
        ZOLTA_ASSERT(m_refs > 0);
        const std::uint32_t remaining = --m_refs;
        if (remaining == 0)
            delete this;
        return remaining;
    }

    [[nodiscard]] HRESULT SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
    [[nodiscard]] HRESULT CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override
    {
        return E_NOTIMPL;
    }
    [[nodiscard]] HRESULT Commit(std::uint32_t) override { return E_NOTIMPL; }
    [[nodiscard]] HRESULT Revert() override { return E_NOTIMPL; }
    [[nodiscard]] HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, std::uint32_t) override { return E_NOTIMPL; }
    [[nodiscard]] HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, std::uint32_t) override { return E_NOTIMPL; }
    [[nodiscard]] HRESULT Clone(IStream** outClone) override
    {
        if (outClone)
            *outClone = nullptr;
        return E_NOTIMPL;
    }

protected:
    ~CZoltaStreamBase() override = default;

private:
    std::uint32_t m_refs = 1;
};
