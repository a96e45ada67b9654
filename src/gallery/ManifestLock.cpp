#include "gallery/ManifestLock.h"

std::recursive_mutex& GetManifestLock()
{
    static std::recursive_mutex lock;
    return lock;
}
