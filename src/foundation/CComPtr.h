#pragma once

#include "libZoltaAtl/ZoltaAssert.h"
#include "foundation/ZoltaUnknown.h"

#include <cstddef>
#include <utility>

// Holder of one reference to a reference-counted object. Taking a raw pointer adds a reference;
// Attach adopts one that the caller already owns (a freshly created object, for instance).
template <class T>
class CComPtr {
public:
    CComPtr() noexcept = default;
    CComPtr(std::nullptr_t) noexcept {}
    CComPtr(T* object) noexcept
        : p(object)
    {
        AddRefIfSet();
    }
    CComPtr(const CComPtr& other) noexcept
        : p(other.p)
    {
        AddRefIfSet();
    }
    CComPtr(CComPtr&& other) noexcept
        : p(std::exchange(other.p, nullptr))
    {}
    template <class U>
    CComPtr(const CComPtr<U>& other) noexcept
        : p(other.p)
    {
        AddRefIfSet();
    }
    ~CComPtr() { Release(); }

    CComPtr& operator=(T* object) noexcept
    {
        if (object != p) {
            CComPtr keep(object);
            Swap(keep);
        }
        return *this;
    }
    CComPtr& operator=(const CComPtr& other) noexcept { return *this = other.p; }
    CComPtr& operator=(CComPtr&& other) noexcept
    {
        if (this != &other) {
            Release();
            p = std::exchange(other.p, nullptr);
        }
        return *this;
    }
    CComPtr& operator=(std::nullptr_t) noexcept
    {
        Release();
        return *this;
    }

    T* operator->() const
    {
        ZOLTA_ASSERT(p != nullptr);
        return p;
    }
    T& operator*() const
    {
        ZOLTA_ASSERT(p != nullptr);
        return *p;
    }
    operator T*() const noexcept { return p; }
    bool operator!() const noexcept { return p == nullptr; }

    // For out arguments: only an empty holder may be filled, or a reference would leak.
    T** operator&()
    {
        ZOLTA_ASSERT(p == nullptr);
        return &p;
    }

    // Gives up this holder's reference.
    void Release() noexcept
    {
        if (T* old = std::exchange(p, nullptr))
            old->Release();
    }
    // Adopts a reference without adding one.
    void Attach(T* object) noexcept
    {
        Release();
        p = object;
    }
    // Hands this holder's reference to the caller.
    T* Detach() noexcept { return std::exchange(p, nullptr); }
    // Gives the caller a reference of its own.
    [[nodiscard]] HRESULT CopyTo(T** out) const noexcept
    {
        if (out == nullptr)
            return E_POINTER;
        *out = p;
        if (p)
            p->AddRef();
        return S_OK;
    }
    void Swap(CComPtr& other) noexcept { std::swap(p, other.p); }

    T* p = nullptr;

private:
    void AddRefIfSet() noexcept
    {
        if (p)
            p->AddRef();
    }
};
