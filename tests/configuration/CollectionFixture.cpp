#include "CollectionFixture.h"

#include "support/TestEnvironment.h"

#include <cstdlib>

namespace curatool::test {

std::string MetaDataDocument(const std::string& identifier, const std::string& title)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<lom:lom xmlns:lom=\"http://ltsc.ieee.org/xsd/LOM\"><lom:general>"
           "<lom:identifier><lom:entry>" +
           identifier +
           "</lom:entry></lom:identifier>"
           "<lom:title><lom:string language=\"en\">" +
           title +
           "</lom:string></lom:title>"
           "</lom:general></lom:lom>\n";
}

std::string ConfigurationDocument(const std::string& rootAttributes, const std::string& application,
                                  const std::string& organization, const std::string& gallery)
{
    std::string document = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<CCSettings";
    if (!rootAttributes.empty())
        document += " " + rootAttributes;
    document += ">\n";
    if (!application.empty())
        document += "<Application>" + application + "</Application>\n";
    if (!organization.empty())
        document += "<Organization>" + organization + "</Organization>\n";
    if (!gallery.empty())
        document += gallery + "\n";
    return document + "</CCSettings>\n";
}

CollectionFiles CompleteCollection(const std::string& organization, const std::string& gallery, const std::string& guid)
{
    CollectionFiles files;
    files.configuration = ConfigurationDocument(
        "Version=\"1.0.0.0\"",
        "<Title Value=\"" + gallery +
            " Setup\"/>"
            "<About Value=\"texts/about.html\"/>"
            "<PathOverride Value=\"\"/>"
            "<SplashScreen Text=\"texts/splash.html\" TextOffset_X=\"12\" TextOffset_Y=\"-7\" ShowText=\"true\"/>"
            "<StyleSheet Value=\"style.qss\"/>"
            "<AdditionalFiles><File Path=\"extra/readme.txt\"/><Directory Path=\"Languages\"/>"
            "<File Path=\"\"/></AdditionalFiles>",
        "<Name Value=\"" + organization + "\"/><Logo Value=\"images/logo.png\"/>",
        "<Gallery GUID=\"" + guid + "\" DefaultSource=\"http://example.invalid/data\" Name=\"" + gallery +
            "\">"
            "<Category ShortID=\"maps\" GUID=\"guid-maps\"/><Category ShortID=\"animals\" GUID=\"guid-animals\"/>"
            "</Gallery>");
    files.metadata = MetaDataDocument(guid, gallery);
    files.others = {
        {"texts/about.html", "<p>about</p>"},
        {"texts/splash.html", "<p>splash</p>"},
        {"style.qss", "QLabel { color: red; }"},
        {"images/logo.png", "\x89PNG fake"},
        {"extra/readme.txt", "read me"},
        {"Languages/de/CuratoolId.qm", "catalogue"},
        {"Languages/fr/CuratoolId.qm", "catalogue fr"},
    };
    return files;
}

std::string WriteCollection(const std::string& name, const CollectionFiles& files)
{
    const std::string folder = MakeScratchDir(name);
    if (!files.configuration.empty())
        WriteFile(folder + "/configuration.xml", files.configuration);
    if (!files.metadata.empty())
        WriteFile(folder + "/metadata.xml", files.metadata);
    for (const auto& [path, content] : files.others)
        WriteFile(folder + "/" + path, content);
    return folder;
}

std::string ConfigurationsFolder()
{
    return std::string(std::getenv("CURATOOL_ROOT")) + "/usr/local/share/ZOLTA Scrivent Galleries/Configurations";
}

}  // namespace curatool::test
