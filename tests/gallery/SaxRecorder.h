#pragma once

#include "gallery/sax/ZOLTASaxContentHandler.h"

#include <functional>
#include <string>
#include <vector>

// Records every event of a parse as one line, so tests can compare whole event sequences.
// Start: "<name text=[...] a=[1] b=- @pos" (a "-" marks an invalid slice); end: "</name @pos".
class SaxRecorder : public ZOLTASaxContentHandler {
public:
    static std::string Show(const ZOLTASaxString& slice)
    {
        return slice.IsValid() ? "[" + std::string(slice.data, slice.length) + "]" : "-";
    }

    HRESULT StartDocument() override
    {
        events.push_back("start-document");
        return stopAtStartDocument;
    }
    HRESULT EndDocument() override
    {
        events.push_back("end-document");
        return endDocumentResult;
    }
    HRESULT StartElement(const ZOLTASaxString& prefix, const ZOLTASaxString& localName, const ZOLTASaxString& qName,
                         const ZOLTASaxAttributes& attributes, const ZOLTASaxString& text, std::uint32_t position,
                         std::uint32_t length) override
    {
        std::string line = "<" + std::string(qName.data, qName.length);
        line += " text=" + Show(text);
        for (std::uint32_t i = 0; i < attributes.count; ++i)
            line += " " + std::string(attributes.names[i].data, attributes.names[i].length) + "=" +
                    Show(attributes.values[i]);
        line += " @" + std::to_string(position);
        events.push_back(line);
        lastAttributeCount = attributes.count;
        lastLength = length;
        prefixes.push_back(Show(prefix));
        localNames.push_back(Show(localName));
        if (onAttributes)
            onAttributes(attributes);
        return ++startCount == stopAtStart ? stopResult : S_OK;
    }
    HRESULT EndElement(const ZOLTASaxString& prefix, const ZOLTASaxString& localName, const ZOLTASaxString& qName,
                       std::uint32_t position, std::uint32_t length) override
    {
        events.push_back("</" + std::string(qName.data, qName.length) + " @" + std::to_string(position));
        prefixes.push_back(Show(prefix));
        localNames.push_back(Show(localName));
        return ++endCount == stopAtEnd ? stopResult : S_OK;
    }

    // Sees each start tag's attributes while they are valid.
    std::function<void(const ZOLTASaxAttributes&)> onAttributes;
    std::vector<std::string> events;
    std::vector<std::string> prefixes;
    std::vector<std::string> localNames;
    std::uint32_t lastAttributeCount = 0;
    std::uint32_t lastLength = 0;
    HRESULT stopAtStartDocument = S_OK;
    HRESULT endDocumentResult = S_OK;
    int startCount = 0;
    int endCount = 0;
    int stopAtStart = -1;
    int stopAtEnd = -1;
    HRESULT stopResult = S_FALSE;
};
