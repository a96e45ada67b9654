#include "gallery/CGalleryImageRegistry.h"

#include "libZoltaAtl/ZoltaAssert.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <shared_mutex>
#include <vector>

namespace {

struct Range {
    const char* begin;
    const char* end;
};

struct Registry {
    std::shared_mutex mutex;
    std::vector<Range> ranges;
    std::atomic<std::size_t> size{0};
};

Registry& TheRegistry()
{
    static Registry registry;
    return registry;
}

}  // namespace

void CGalleryImageRegistry::Register(const void* begin, std::size_t size)
{
    Registry& registry = TheRegistry();
    std::unique_lock lock(registry.mutex);
    const char* first = static_cast<const char*>(begin);
    registry.ranges.push_back({first, first + size});
    registry.size = registry.ranges.size();
}

void CGalleryImageRegistry::Unregister(const void* begin)
{
    Registry& registry = TheRegistry();
    std::unique_lock lock(registry.mutex);
    auto& ranges = registry.ranges;
    ranges.erase(
        std::remove_if(ranges.begin(), ranges.end(), [begin](const Range& range) { return range.begin == begin; }),
        ranges.end());
    registry.size = ranges.size();
}

bool CGalleryImageRegistry::Contains(const void* pointer)
{
    Registry& registry = TheRegistry();
    // Most processes never open a cache: no lock then.
    if (registry.size.load(std::memory_order_acquire) == 0 || !pointer)
        return false;
    std::shared_lock lock(registry.mutex);
    const char* address = static_cast<const char*>(pointer);
    const std::less<const char*> before;
    for (const Range& range : registry.ranges) {
        if (!before(address, range.begin) && before(address, range.end))
            return true;
    }
    return false;
}

CGalleryImageBuffer::~CGalleryImageBuffer()
{
    Release();
}

void CGalleryImageBuffer::Adopt(void* bytes, std::size_t size)
{
    ZOLTA_ASSERT(m_count < kMaxBlocks);
    CGalleryImageRegistry::Register(bytes, size);
    m_blocks[m_count++] = {bytes, size};
}

void CGalleryImageBuffer::Release()
{
    while (m_count > 0) {
        Block& block = m_blocks[--m_count];
        CGalleryImageRegistry::Unregister(block.bytes);
        std::free(block.bytes);
        block = {};
    }
}
