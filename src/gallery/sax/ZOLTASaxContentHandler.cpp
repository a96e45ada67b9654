#include "gallery/sax/ZOLTASaxContentHandler.h"

ZOLTASaxContentHandler::~ZOLTASaxContentHandler() = default;

HRESULT ZOLTASaxContentHandler::StartDocument()
{
    return S_OK;
}

HRESULT ZOLTASaxContentHandler::EndDocument()
{
    return S_OK;
}

HRESULT ZOLTASaxContentHandler::StartElement(const ZOLTASaxString&, const ZOLTASaxString&, const ZOLTASaxString&,
                                             const ZOLTASaxAttributes&, const ZOLTASaxString&, std::uint32_t,
                                             std::uint32_t)
{
    return S_OK;
}

HRESULT ZOLTASaxContentHandler::EndElement(const ZOLTASaxString&, const ZOLTASaxString&, const ZOLTASaxString&,
                                           std::uint32_t, std::uint32_t)
{
    return S_OK;
}

HRESULT ZOLTASaxContentHandler::UnusedEvent()
{
    return S_OK;
}
