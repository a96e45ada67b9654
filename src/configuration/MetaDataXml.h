#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "configuration/FileList.h"

#include <map>
#include <memory>

// The collection's metadata.xml: a small LOM document with the identifier and the titles per
// language. Only lom:general/lom:identifier/lom:entry and lom:general/lom:title are read.
class MetaDataXml {
public:
    explicit MetaDataXml(std::shared_ptr<FileList> files = std::shared_ptr<FileList>());

    // Also enters the document in the file list, if there is one.
    [[nodiscard]] bool Read(const CAtlString& file);

    const CAtlString& Identifier() const { return m_identifier; }
    // The title in `language`; otherwise the English one, which is created empty when absent.
    CAtlString Title(const CAtlString& language);
    const std::map<CAtlString, CAtlString>& Titles() const { return m_titles; }

private:
    std::shared_ptr<FileList> m_files;
    CAtlString m_identifier;
    std::map<CAtlString, CAtlString> m_titles;
};
