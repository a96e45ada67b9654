#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <map>

namespace tinyxml2 {
class XMLElement;
}

// The gallery's identity: the Gallery element of configuration.xml.
class CGalleryData {
public:
    typedef std::map<CAtlString, CAtlString> CategoryMap;  // ShortID -> category GUID

    void Read(const tinyxml2::XMLElement& gallery);
    void Write(tinyxml2::XMLElement& gallery) const;

    const CategoryMap& GetCategories() const { return m_categories; }
    const CAtlString& GetGUID() const { return m_guid; }
    const CAtlString& GetDefaultSource() const { return m_defaultSource; }
    const CAtlString& GetName() const { return m_name; }

private:
    CategoryMap m_categories;
    CAtlString m_guid;
    CAtlString m_defaultSource;
    CAtlString m_name;
};
