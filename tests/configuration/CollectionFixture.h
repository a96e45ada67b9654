#pragma once

#include "support/TestText.h"

#include <QString>

#include <map>
#include <string>

namespace curatool::test {

// The texts of one collection directory: configuration.xml, metadata.xml and any other file.
struct CollectionFiles {
    std::string configuration;
    std::string metadata;
    std::map<std::string, std::string> others;  // relative path -> content
};

// A metadata.xml with the given identifier and one English title.
std::string MetaDataDocument(const std::string& identifier, const std::string& title);

// A configuration.xml whose Application, Organization and Gallery bodies are given as they stand.
std::string ConfigurationDocument(const std::string& rootAttributes, const std::string& application,
                                  const std::string& organization, const std::string& gallery);

// A full collection with every kind of reference: about, splash, style sheet, logo, one
// additional directory and one additional file.
CollectionFiles CompleteCollection(const std::string& organization, const std::string& gallery,
                                   const std::string& guid);

// Writes the collection below a fresh scratch folder and returns that folder.
std::string WriteCollection(const std::string& name, const CollectionFiles& files);

// Where the configurations of this test process are stored, below CURATOOL_ROOT.
std::string ConfigurationsFolder();

}  // namespace curatool::test
