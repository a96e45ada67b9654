#include "GallerySourceBuilder.h"

#include "TestEnvironment.h"
#include "gallery/CGalleryManifestIO.h"
#include "ziparchive/ZipHelpers.h"

#include <gtest/gtest.h>

namespace curatool::test {

namespace {

std::string Lom(const std::string& id, const std::string& version = std::string())
{
    std::string text =
        "<lom:lom><lom:general><lom:identifier><lom:entry>" + id + "</lom:entry></lom:identifier></lom:general>";
    if (!version.empty())
        text += "<lom:lifeCycle><lom:version><lom:string language=\"en\">" + version +
                "</lom:string></lom:version></lom:lifeCycle>";
    return text + "</lom:lom>";
}

std::string ActivityId(const PackageSpec& package)
{
    return package.activityId.empty() ? package.id + ".a" : package.activityId;
}

std::string StringVersions(const PackageSpec& package)
{
    if (package.stringVersions.empty())
        return std::string();
    std::string text = "<zoltagallery:stringversions>";
    for (const auto& [language, version] : package.stringVersions)
        text += "<lom:string language=\"" + language + "\">" + version + "</lom:string>";
    return text + "</zoltagallery:stringversions>\n";
}

}  // namespace

std::string InstallRecordPath(const std::string& gallery, const std::string& id)
{
    const CAtlString name = CGalleryManifestIO::GetInstallRecordName(CAtlString(id.c_str()));
    return gallery + "/Uninstall/" + name.ToQString().toStdString();
}

void WriteInstallRecord(const std::string& gallery, const PackageSpec& package)
{
    ASSERT_TRUE(WriteFile(InstallRecordPath(gallery, package.id), PackageManifestXml(package)));
}

std::string PackageManifestXml(const PackageSpec& package)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<manifest identifier=\"id1\" version=\"2006-01\">\n" +
           StringVersions(package) + "<metadata>" + Lom(package.id, package.version) +
           "</metadata>\n"
           "<organizations default=\"id2\"><organization identifier=\"id2\"><title>Organization</title>\n"
           "<item identifier=\"id3\"><title>Category</title>\n"
           "<item identifier=\"id4\" identifierref=\"id5\"><title>" +
           package.title + "</title><metadata>" + Lom(ActivityId(package)) +
           "</metadata></item>\n"
           "<metadata>" +
           Lom("shared.category") +
           "</metadata></item>\n"
           "<metadata>" +
           Lom("shared.organization") +
           "</metadata></organization></organizations>\n"
           "<resources><resource identifier=\"id5\" type=\"webcontent\" href=\"" +
           package.content + "\"><file href=\"" + package.content + "\"/></resource></resources>\n</manifest>\n";
}

void WritePackageFolder(const std::string& root, const std::string& name, const PackageSpec& package)
{
    ASSERT_TRUE(WriteFile(root + "/" + name + "/imsmanifest.xml", PackageManifestXml(package)));
    ASSERT_TRUE(WriteFile(root + "/" + name + "/" + package.content, package.contentBytes));
}

void WritePackageZip(const std::string& root, const std::string& name, const PackageSpec& package)
{
    const std::string staging = MakeScratchDir("zipstaging");
    WritePackageFolder(staging, "pkg", package);
    ASSERT_TRUE(
        ZipAddDirectory(CZoltaDirectoryPath((staging + "/pkg").c_str()), CZoltaFilePath((root + "/" + name).c_str())));
}

void WriteCatalogue(const std::string& path, const std::string& language, const PackageSpec& package,
                    const std::string& title, const std::string& stringVersion)
{
    ASSERT_TRUE(WriteFile(path, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<i18n language=\"" + language +
                                    "\"><manifest id=\"" + package.id + "\" languagestringversion=\"" + stringVersion +
                                    "\"><item id=\"" + ActivityId(package) + "\"><title>" + title +
                                    "</title></item></manifest></i18n>\n"));
}

std::string CategoriesXml(const std::vector<CategorySpec>& categories, const std::vector<std::string>& removals)
{
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<gallery>\n<categories>\n";
    for (const CategorySpec& category : categories) {
        xml += "<category id=\"" + category.id + "\" version=\"" + category.version + "\" " + category.extraAttributes +
               ">\n<title>";
        for (const auto& [language, title] : category.titles)
            xml += "<t language=\"" + language + "\">" + title + "</t>";
        xml += "</title>\n<files>\n";
        for (const CategoryFileSpec& file : category.files) {
            xml += "<file id=\"" + file.id + "\" version=\"" + file.version + "\"";
            if (!file.strings.empty())
                xml += " strings=\"" + file.strings + "\"";
            xml += ">" + file.name + "</file>\n";
        }
        xml += "</files>\n";
        if (!category.strings.empty()) {
            xml += "<strings>";
            for (const auto& [language, package] : category.strings)
                xml += "<s language=\"" + language + "\">" + package + "</s>";
            xml += "</strings>\n";
        }
        xml += "</category>\n";
    }
    xml += "</categories>\n";
    if (!removals.empty()) {
        xml += "<mandatory><removals>";
        for (const std::string& id : removals)
            xml += "<r id=\"" + id + "\"/>";
        xml += "</removals></mandatory>\n";
    }
    return xml + "</gallery>\n";
}

}  // namespace curatool::test
