#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "configuration/FileList.h"

#include <memory>

namespace tinyxml2 {
class XMLElement;
}

// The organisation that issued a collection: the Organization element of configuration.xml.
class COrganizationData {
public:
    explicit COrganizationData(std::shared_ptr<FileList> files);

    void Read(const tinyxml2::XMLElement& organization);
    void Write(tinyxml2::XMLElement& organization) const;

    const CAtlString& GetName() const { return m_name; }
    // Relative to the document; the configuration resolves it.
    const CAtlString& GetLogo() const { return m_logo; }

private:
    CAtlString m_name;
    CAtlString m_logo;
    std::shared_ptr<FileList> m_files;
};
