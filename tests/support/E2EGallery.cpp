#include "E2EGallery.h"

#include "GallerySourceBuilder.h"
#include "TestEnvironment.h"

#include <QFile>
#include <QSettings>
#include <QString>

#include <algorithm>
#include <filesystem>
#include <regex>

namespace fs = std::filesystem;

namespace curatool::test {

const char kGalleryGuid[] = "5a0f3c2e-8d41-4b6a-9c57-2e1d7b9f0a31";
const char kSharedGalleries[] = "/usr/local/share/ZOLTA Scrivent Galleries";

namespace {

const char kOrganization[] = "ZOLTA Technologies Inc.";
const char kGalleryName[] = "ZOLTA Sample Collection";
const char kProxySection[] = "Software/ZOLTA Technologies Inc./ZOLTA Tavolite Software/ProxyInformation/";

std::string VersionOf(const std::map<std::string, std::string>& versions, const std::string& alias)
{
    const auto found = versions.find(alias);
    return found == versions.end() ? "1.0" : found->second;
}

bool Contains(const std::vector<std::string>& list, const std::string& item)
{
    return std::find(list.begin(), list.end(), item) != list.end();
}

}  // namespace

const std::vector<SampleCategory>& SampleCategories()
{
    static const std::vector<SampleCategory> categories{
        {"animals",
         "0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e01",
         "Animals",
         {{"dog.zip", "pkg.dog", "dog.png"}, {"cow.zip", "pkg.cow", "cow.png"}}},
        {"maps",
         "0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e02",
         "Maps",
         {{"map.zip", "pkg.map", "map.png"}, {"globe.zip", "pkg.globe", "globe.png"}}},
        {"sounds", "0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e03", "Sounds", {{"bell.zip", "pkg.bell", "bell.wav"}}},
    };
    return categories;
}

const SampleCategory& Category(const std::string& alias)
{
    for (const SampleCategory& category : SampleCategories())
        if (category.alias == alias)
            return category;
    throw std::invalid_argument(alias);
}

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    if (start < text.size())
        lines.push_back(text.substr(start));
    return lines;
}

bool StartsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

bool EndsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool HasInOrder(const std::vector<std::string>& lines, const std::vector<std::string>& wanted)
{
    auto next = lines.begin();
    for (const std::string& line : wanted) {
        next = std::find(next, lines.end(), line);
        if (next == lines.end())
            return false;
        ++next;
    }
    return true;
}

std::string ProgressLine(const std::string& word, int overall, const std::string& category, const std::string& item)
{
    return word + " \t[" + std::to_string(overall) + "%] (" + category + ") " + item;
}

std::string DownloadFailure(const std::string& url, const std::string& reason)
{
    return "Could not download the file:\n" + url + "\nMake sure the computer has an active Internet connection.\n" +
           reason + "\n";
}

std::string NotWritable(const std::string& path)
{
    return "You must have write permissions for the destination directory:\n" + path + "\n";
}

void E2EGallery::SetUp()
{
    m_base = MakeScratchDir("world");
    m_home = m_base + "/home";
    m_config = m_base + "/config";
    m_root = m_base + "/root";
    for (const std::string& folder : {m_home, m_config, m_root, m_base + "/tmp", m_base + "/cwd"})
        fs::create_directories(folder);

    m_collection = m_base + "/collection";
    fs::copy(CURATOOL_SOURCE_DIR "/samples/collection", m_collection, fs::copy_options::recursive);
    m_source = m_base + "/source";
    WriteSource(m_source);
    m_gallery = m_base + "/gallery";
}

RunOptions E2EGallery::Options() const
{
    RunOptions options;
    options.setEnvironment["HOME"] = m_home;
    options.setEnvironment["XDG_CONFIG_HOME"] = m_config;
    options.setEnvironment["TMPDIR"] = m_base + "/tmp";
    options.setEnvironment["CURATOOL_ROOT"] = m_root;
    // A run with an empty source reads relative names from where it stands.
    options.workingDirectory = m_base + "/cwd";
    options.timeoutMs = 30000;
    return Headless(options);
}

RunResult E2EGallery::Curatool(const std::vector<std::string>& arguments) const
{
    const RunResult r = RunCuratool(arguments, Options());
    // Headless runs print nothing of their toolkit, and none of them crashes.
    for (const char* noise : {"qt.", "QStandardPaths", "platform plugin", "QObject", "Warning", "XDG_"}) {
        EXPECT_EQ(std::string::npos, r.err.find(noise)) << r.err;
        EXPECT_EQ(std::string::npos, r.out.find(noise)) << r.out;
    }
    EXPECT_EQ(0, r.signal);
    return r;
}

std::string E2EGallery::SystemPath(const std::string& absolute) const
{
    return m_root + absolute;
}

std::string E2EGallery::DefaultInstallDirectory() const
{
    return SystemPath(std::string(kSharedGalleries) + "/" + kOrganization + "/" + kGalleryName);
}

std::string E2EGallery::StoredConfigurationDirectory() const
{
    return SystemPath(std::string(kSharedGalleries) + "/Configurations/" + kOrganization + "/" + kGalleryName);
}

void E2EGallery::SetDefaultSource(const std::string& url)
{
    const std::string path = m_collection + "/configuration.xml";
    const std::string text = ReadFile(path);
    const std::string changed =
        std::regex_replace(text, std::regex("DefaultSource=\"[^\"]*\""), "DefaultSource=\"" + url + "\"");
    ASSERT_NE(text, changed);
    ASSERT_TRUE(WriteFile(path, changed));
}

std::string E2EGallery::ContentBytes(const std::string& content, const std::string& version)
{
    return content + " at " + version;
}

void E2EGallery::WriteSource(const std::string& folder, const std::map<std::string, std::string>& versions,
                             const std::vector<std::string>& missing)
{
    fs::create_directories(folder);
    std::vector<CategorySpec> offers;
    for (const SampleCategory& category : SampleCategories()) {
        const std::string version = VersionOf(versions, category.alias);
        CategorySpec offered{category.guid, version, {{"en", category.title}}, {}, {}, ""};
        for (const SampleCategory::Package& package : category.packages) {
            offered.files.push_back({package.file, package.id, version, ""});
            if (Contains(missing, package.file)) {
                fs::remove(folder + "/" + package.file);
                continue;
            }
            PackageSpec content{package.id,
                                version,
                                package.content,
                                ContentBytes(package.content, version),
                                category.title + " " + package.id,
                                "",
                                {}};
            WritePackageZip(folder, package.file, content);
        }
        offers.push_back(offered);
    }
    std::string xml = CategoriesXml(offers);
    xml.replace(xml.find("<categories>"), 12, std::string("<categories id=\"") + kGalleryGuid + "\">");
    ASSERT_TRUE(WriteFile(folder + "/gallery_categories.xml", xml));
}

bool E2EGallery::HasCategory(const std::string& gallery, const std::string& alias, const std::string& version)
{
    for (const SampleCategory::Package& package : Category(alias).packages)
        if (ReadFile(gallery + "/" + package.content) != ContentBytes(package.content, version))
            return false;
    return true;
}

bool E2EGallery::LacksCategory(const std::string& gallery, const std::string& alias)
{
    for (const SampleCategory::Package& package : Category(alias).packages)
        if (Exists(gallery + "/" + package.content))
            return false;
    return true;
}

std::string E2EGallery::RegistryValue(const std::string& key) const
{
    // The system-scope store, or the user's file when the system one cannot be written.
    const std::string files[] = {SystemPath("/etc/xdg/zoltaworks/Curatool.conf"),
                                 m_config + "/zoltaworks/Curatool.conf"};
    const QString name = QStringLiteral("Software/ZOLTA Technologies Inc./Gallery/TeamContent/%1/%2")
                             .arg(QString::fromLatin1(kGalleryGuid), QString::fromStdString(key));
    for (const std::string& file : files) {
        if (!QFile::exists(QString::fromStdString(file)))
            continue;
        QSettings store(QString::fromStdString(file), QSettings::IniFormat);
        const QString value = store.value(name).toString();
        if (!value.isEmpty())
            return value.toStdString();
    }
    return std::string();
}

void E2EGallery::StoreProxy(const std::string& host, int port) const
{
    QSettings store(QString::fromStdString(m_config + "/zoltaworks.conf"), QSettings::IniFormat);
    store.setValue(QString::fromLatin1(kProxySection) + "HttpProxyHost", QString::fromStdString(host));
    store.setValue(QString::fromLatin1(kProxySection) + "HttpProxyPort", port);
    store.sync();
    ASSERT_EQ(QSettings::NoError, store.status());
}

std::string E2EGallery::StoredProxyValue(const std::string& key) const
{
    QSettings store(QString::fromStdString(m_config + "/zoltaworks.conf"), QSettings::IniFormat);
    return store.value(QString::fromLatin1(kProxySection) + QString::fromStdString(key)).toString().toStdString();
}

void ServedGallery::SetUp()
{
    E2EGallery::SetUp();
    ASSERT_TRUE(m_server.StartStaticServer(QString::fromStdString(m_source)));
    m_url = HttpUrl(m_server.Port(), QString()).toStdString();
    SetDefaultSource(m_url);
}

std::string ServedGallery::CheckedThenDone() const
{
    return "Checking connection to: " + m_url + "\nCheck succeeded.\nDone.\n";
}

}  // namespace curatool::test
