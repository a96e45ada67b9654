#pragma once

// Builds small gallery data sources on disk for the engine tests: packages (folders or zip
// archives holding an imsmanifest.xml and content files), string catalogues and the
// categories document that lists them.

#include <string>
#include <utility>
#include <vector>

namespace curatool::test {

struct PackageSpec {
    std::string id;       // the manifest's identifier
    std::string version;  // lom version, at least two characters
    std::string content;  // name of its one content file
    std::string contentBytes = "picture bytes";
    std::string title = "Picture";  // title of the activity
    std::string activityId{};       // identifier of the activity; id + ".a" when empty
    std::vector<std::pair<std::string, std::string>> stringVersions{};  // language, version
};

// The text of a package's imsmanifest.xml.
std::string PackageManifestXml(const PackageSpec& package);

// A package as a folder `<root>/<name>` (imsmanifest.xml plus the content file).
void WritePackageFolder(const std::string& root, const std::string& name, const PackageSpec& package);
// A package as a zip archive `<root>/<name>` made with the program's zip layer.
void WritePackageZip(const std::string& root, const std::string& name, const PackageSpec& package);

// An install record of `package` in `<gallery>/Uninstall`, as an earlier run leaves it.
void WriteInstallRecord(const std::string& gallery, const PackageSpec& package);
// The path of that record.
std::string InstallRecordPath(const std::string& gallery, const std::string& id);

// An i18n.xml catalogue giving `title` to the activity of `package` in `language`.
void WriteCatalogue(const std::string& path, const std::string& language, const PackageSpec& package,
                    const std::string& title, const std::string& stringVersion = "1.0");

struct CategoryFileSpec {
    std::string name;
    std::string id;
    std::string version;
    std::string strings;  // attribute strings, omitted when empty
};

struct CategorySpec {
    std::string id;
    std::string version;
    std::vector<std::pair<std::string, std::string>> titles;  // language, title
    std::vector<CategoryFileSpec> files;
    std::vector<std::pair<std::string, std::string>> strings;  // language, package file
    std::string extraAttributes;                               // e.g. size="12"
};

std::string CategoriesXml(const std::vector<CategorySpec>& categories, const std::vector<std::string>& removals = {});

}  // namespace curatool::test
