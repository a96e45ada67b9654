#pragma once

#include "gallery/sax/ZOLTASaxAttributes.h"
#include "gallery/sax/ZOLTASaxString.h"
#include "foundation/ZoltaResult.h"

#include <cstdint>

// Base of every reader of gallery documents. The parser calls these in document order; a
// non-zero result from any of them stops the parse and becomes the parse's result.
// `position` and `length` are the parser's byte position and the size of the whole buffer,
// so position / length is the share of the work done.
class ZOLTASaxContentHandler {
public:
    virtual ~ZOLTASaxContentHandler();

    [[nodiscard]] virtual HRESULT StartDocument();
    [[nodiscard]] virtual HRESULT EndDocument();

    // `text` is the run of text directly behind the start tag (invalid when there is none
    // or it is white space only); text after a child's end tag is never reported.
    [[nodiscard]] virtual HRESULT StartElement(const ZOLTASaxString& prefix, const ZOLTASaxString& localName,
                                               const ZOLTASaxString& qName, const ZOLTASaxAttributes& attributes,
                                               const ZOLTASaxString& text, std::uint32_t position,
                                               std::uint32_t length);

    // At an end tag only `qName` is fresh: `prefix` is empty and `localName` still names the
    // last start tag.
    [[nodiscard]] virtual HRESULT EndElement(const ZOLTASaxString& prefix, const ZOLTASaxString& localName,
                                             const ZOLTASaxString& qName, std::uint32_t position, std::uint32_t length);

    // Kept for the shape of the interface; the parser never calls it.
    [[nodiscard]] virtual HRESULT UnusedEvent();
};
