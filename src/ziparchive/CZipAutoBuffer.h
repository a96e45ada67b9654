#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

// A plain owned block of bytes; the working buffers of reading and writing entries.
class CZipAutoBuffer {
public:
    CZipAutoBuffer() = default;
    explicit CZipAutoBuffer(size_t size) { Allocate(size); }
    ~CZipAutoBuffer() { Release(); }
    CZipAutoBuffer(const CZipAutoBuffer&) = delete;
    CZipAutoBuffer& operator=(const CZipAutoBuffer&) = delete;

    // Reuses the block when it is already large enough; the contents are not kept.
    char* Allocate(size_t size)
    {
        if (size > m_capacity) {
            Release();
            m_data = static_cast<char*>(std::malloc(size ? size : 1));
            if (!m_data)
                throw std::bad_alloc();
            m_capacity = size;
        }
        m_size = size;
        return m_data;
    }
    void Release()
    {
        std::free(m_data);
        m_data = nullptr;
        m_size = m_capacity = 0;
    }

    char* GetBuffer() const { return m_data; }
    size_t GetSize() const { return m_size; }
    bool IsAllocated() const { return m_data != nullptr; }
    operator char*() const { return m_data; }

private:
    char* m_data = nullptr;
    size_t m_size = 0;
    size_t m_capacity = 0;
};
