#pragma once

// A collection of its own in a scratch folder: `name` is its title, its gallery's name and its
// English metadata title (a German one stands first); `application` goes inside <Application>.

#include "support/TestEnvironment.h"

#include <string>

namespace curatool::test {

inline std::string WriteCollection(const std::string& guid, const std::string& name,
                                   const std::string& application = "")
{
    const std::string folder = MakeScratchDir("collection-" + guid);
    WriteFile(
        folder + "/configuration.xml",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CCSettings Version=\"1.0.0.0\"><Application><Title Value=\"" +
            name + "\"/>" + application +
            "</Application><Organization><Name Value=\"Org\"/></Organization><Gallery GUID=\"" + guid +
            "\" DefaultSource=\"http://127.0.0.1:9/none\" Name=\"" + name + "\"/></CCSettings>\n");
    WriteFile(folder + "/metadata.xml",
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<lom:lom><lom:general><lom:identifier><lom:entry>" + guid +
                  "</lom:entry></lom:identifier><lom:title><lom:string language=\"de\">Nur Deutsch</lom:string>"
                  "<lom:string language=\"en\">" +
                  name + "</lom:string></lom:title></lom:general></lom:lom>\n");
    return folder;
}

}  // namespace curatool::test
