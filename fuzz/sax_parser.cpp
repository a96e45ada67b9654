// Feeds arbitrary bytes to the gallery SAX parser with a handler that reads every slice it
// is given and decodes texts and attribute values, as the manifest reader does.
#include "libZoltaAtl/CAtlString.h"
#include "gallery/sax/ZOLTASaxDecodeText.h"
#include "gallery/sax/ZOLTASaxParser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

class TouchingHandler : public ZOLTASaxContentHandler {
public:
    HRESULT StartElement(const ZOLTASaxString& prefix, const ZOLTASaxString& localName, const ZOLTASaxString& qName,
                         const ZOLTASaxAttributes& attributes, const ZOLTASaxString& text, std::uint32_t position,
                         std::uint32_t length) override
    {
        Check(position, length);
        Touch(prefix);
        Touch(localName);
        Touch(qName);
        if (attributes.count >= attributes.capacity)
            std::abort();
        for (std::uint32_t i = 0; i < attributes.count; ++i) {
            Touch(attributes.names[i]);
            m_sum += static_cast<std::size_t>(DecodeText(attributes.values[i]).GetLength());
        }
        m_sum += attributes.GetValue("identifier").length;
        m_sum += static_cast<std::size_t>(DecodeText(text).GetLength());
        // Stop now and then, as a cancelled reader does.
        return (m_sum % 997) == 996 ? S_FALSE : S_OK;
    }

    HRESULT EndElement(const ZOLTASaxString& prefix, const ZOLTASaxString& localName, const ZOLTASaxString& qName,
                       std::uint32_t position, std::uint32_t length) override
    {
        Check(position, length);
        Touch(prefix);
        Touch(localName);
        Touch(qName);
        return S_OK;
    }

    std::size_t m_sum = 0;

private:
    static void Check(std::uint32_t position, std::uint32_t length)
    {
        if (position > length)
            std::abort();
    }
    void Touch(const ZOLTASaxString& slice)
    {
        for (std::uint32_t i = 0; i < slice.length; ++i)
            m_sum += static_cast<unsigned char>(slice.data[i]);
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 0xFFFFFFFFu)
        return 0;
    TouchingHandler handler;
    const HRESULT hr =
        ZOLTASaxParser::ParseBuffer(reinterpret_cast<const char*>(data), static_cast<std::uint32_t>(size), handler);
    if (hr != S_OK && hr != S_FALSE && hr != E_FAIL)
        std::abort();
    return 0;
}
