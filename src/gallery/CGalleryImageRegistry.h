#pragma once

#include <cstddef>

// Process-wide list of the memory images that gallery trees may live in (the read buffer of
// a cached manifest and anything laid out beside it). Records, strings and blocks inside a
// registered image are never freed one by one: the image goes as a whole when its manifest
// is closed. Every free of gallery data asks here first, from any thread.
class CGalleryImageRegistry {
public:
    static void Register(const void* begin, std::size_t size);
    static void Unregister(const void* begin);
    // Whether `pointer` lies inside a registered image.
    static bool Contains(const void* pointer);
};

// The images one manifest owns: registered while held, unregistered and freed (std::free)
// by Release, which runs only after every object in them is gone.
class CGalleryImageBuffer {
public:
    CGalleryImageBuffer() = default;
    ~CGalleryImageBuffer();
    CGalleryImageBuffer(const CGalleryImageBuffer&) = delete;
    CGalleryImageBuffer& operator=(const CGalleryImageBuffer&) = delete;

    // Takes over a block from std::malloc and registers it.
    void Adopt(void* bytes, std::size_t size);
    void Release();
    bool IsEmpty() const { return m_count == 0; }
    // First adopted block: the read buffer of the cache file.
    void* GetBytes() const { return m_count ? m_blocks[0].bytes : nullptr; }
    std::size_t GetSize() const { return m_count ? m_blocks[0].size : 0; }

private:
    struct Block {
        void* bytes;
        std::size_t size;
    };
    static constexpr std::size_t kMaxBlocks = 4;
    Block m_blocks[kMaxBlocks] = {};
    std::size_t m_count = 0;
};
