// Feeds arbitrary bytes to DecodeText as one text slice.
#include "libZoltaAtl/CAtlString.h"
#include "gallery/sax/ZOLTASaxDecodeText.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 0xFFFFFFFFu)
        return 0;
    const ZOLTASaxString slice(reinterpret_cast<const char*>(data), static_cast<std::uint32_t>(size));
    std::string bytes;
    const bool decoded = DecodeTextBytes(slice, bytes);
    // Decoding never grows a text, and a failure leaves nothing.
    if (bytes.size() > size || (!decoded && !bytes.empty()))
        std::abort();
    const CAtlString text = DecodeText(slice);
    if (static_cast<std::size_t>(text.GetLength()) > bytes.size())
        std::abort();
    return 0;
}
