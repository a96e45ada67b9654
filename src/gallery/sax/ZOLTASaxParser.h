#pragma once

#include "gallery/sax/ZOLTASaxContentHandler.h"
#include "foundation/ZoltaResult.h"

#include <cstdint>

class CAtlString;

// The single-pass event reader of gallery documents (imsmanifest.xml, i18n.xml, feeds). It
// walks the bytes in place and hands slices of them to the handler: nothing is copied and
// nothing is decoded (handlers call DecodeText on what they keep). Names are compared as
// bytes; there are no namespaces and no encodings.
class ZOLTASaxParser {
public:
    // One start tag holds at most kAttributeCapacity - 1 attributes.
    static constexpr std::uint32_t kAttributeCapacity = 20;

    // Parses one document held in memory. Returns 0 on success, the first non-zero result of
    // a handler that stopped the parse (EndDocument's result as it stands), or E_FAIL when
    // the input ends early or is malformed. A null `data` with a non-zero length is E_POINTER.
    [[nodiscard]] static HRESULT ParseBuffer(const char* data, std::uint32_t length, ZOLTASaxContentHandler& handler);

    // Maps the file read-only and parses it with ParseBuffer. A file that can't be opened,
    // measured or mapped (an empty one included) gives E_FAIL.
    [[nodiscard]] static HRESULT ParseFile(const char* path, ZOLTASaxContentHandler& handler);
    // The same for a wide path, handed to the system as UTF-8.
    [[nodiscard]] static HRESULT ParseFile(const CAtlString& path, ZOLTASaxContentHandler& handler);
};
