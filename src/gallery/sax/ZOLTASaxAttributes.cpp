#include "gallery/sax/ZOLTASaxAttributes.h"

void ZOLTASaxAttributes::Reserve(std::uint32_t slots)
{
    count = 0;
    capacity = slots;
    names.reset(new ZOLTASaxString[slots]);
    values.reset(new ZOLTASaxString[slots]);
}

std::uint32_t ZOLTASaxAttributes::IndexOf(const char* name) const
{
    for (std::uint32_t index = 0; index < count; ++index) {
        if (names[index] == name)
            return index;
    }
    return count;
}

const ZOLTASaxString& ZOLTASaxAttributes::GetValue(const char* name) const
{
    const std::uint32_t index = IndexOf(name);
    return index < count ? values[index] : ZOLTASaxString::Empty();
}
