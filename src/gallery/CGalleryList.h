#pragma once

#include "gallery/CGalleryImageRegistry.h"
#include "gallery/CGalleryObject.h"
#include "gallery/GalleryText.h"
#include "foundation/ZoltaResult.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <new>
#include <stdexcept>

// A list of child node pointers, as a record: array, count, capacity. The array comes from
// std::malloc, or lies in an image with its capacity equal to its count, so that the first
// addition moves it to the heap. The list never owns the children: removing one detaches it.
template <class Node>
struct CGalleryList {
    Node** m_array;
    std::uint32_t m_count;
    std::uint32_t m_capacity;

    // Allocates a zeroed, empty list record.
    [[nodiscard]] static HRESULT Create(CGalleryList** target)
    {
        if (!target || *target)
            return E_INVALIDARG;
        auto* list = static_cast<CGalleryList*>(std::calloc(1, sizeof(CGalleryList)));
        if (!list)
            return E_OUTOFMEMORY;
        *target = list;
        return S_OK;
    }

    // Frees the array and the record (image data left alone); the children stay.
    static void Destroy(CGalleryList*& list)
    {
        if (!list)
            return;
        list->ReleaseArray();
        GalleryFreeRecord(list);
        list = nullptr;
    }

    std::uint32_t GetCount() const { return m_count; }

    Node* GetAt(std::uint32_t index) const
    {
        if (index >= m_count)
            throw std::out_of_range("CGalleryList::GetAt");
        return m_array[index];
    }

    [[nodiscard]] HRESULT Add(Node* child)
    {
        if (!child)
            return E_INVALIDARG;
        if (m_count >= m_capacity || IsInImage()) {
            const HRESULT hr = Grow();
            if (FAILED(hr))
                return hr;
        }
        m_array[m_count++] = child;
        return S_OK;
    }

    // Detaches and returns the child at `index`; the others close up.
    Node* RemoveAt(std::uint32_t index)
    {
        Node* child = GetAt(index);
        std::memmove(m_array + index, m_array + index + 1, (m_count - index - 1) * sizeof(Node*));
        --m_count;
        return child;
    }

    // Index of `child` itself, or -1.
    int IndexOf(const Node* child) const
    {
        for (std::uint32_t i = 0; i < m_count; ++i) {
            if (m_array[i] == child)
                return static_cast<int>(i);
        }
        return -1;
    }

    // Index of the first child whose identifier equals `identifier` exactly, or -1.
    int IndexOf(const wchar_t* identifier) const
    {
        if (!identifier)
            return -1;
        for (std::uint32_t i = 0; i < m_count; ++i) {
            if (std::wcscmp(m_array[i]->GetIdentifier(), identifier) == 0)
                return static_cast<int>(i);
        }
        return -1;
    }

    Node* Find(const wchar_t* identifier) const
    {
        const int index = IndexOf(identifier);
        return index < 0 ? nullptr : m_array[index];
    }

    bool Contains(const wchar_t* identifier) const { return IndexOf(identifier) >= 0; }

    // Forgets all children without touching them and frees the array.
    void ReleaseArray()
    {
        GalleryFreeRecord(m_array);
        m_array = nullptr;
        m_count = 0;
        m_capacity = 0;
    }

private:
    bool IsInImage() const { return m_array && CGalleryImageRegistry::Contains(m_array); }

    [[nodiscard]] HRESULT Grow()
    {
        const std::uint32_t capacity = m_count < 4 ? 8 : m_count * 2;
        auto* array = static_cast<Node**>(std::malloc(capacity * sizeof(Node*)));
        if (!array)
            return E_OUTOFMEMORY;
        if (m_count)
            std::memcpy(array, m_array, m_count * sizeof(Node*));
        GalleryFreeRecord(m_array);
        m_array = array;
        m_capacity = capacity;
        return S_OK;
    }
};
