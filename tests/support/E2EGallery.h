#pragma once

// A private world for runs of the real binary on the sample collection: its own HOME, settings
// folders, temporary folder and system root per test, a copy of the collection whose default
// source can be pointed anywhere, and gallery data sources whose versions the test chooses.

#include "LoopbackServers.h"
#include "RunBinary.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace curatool::test {

extern const char kGalleryGuid[];
extern const char kSharedGalleries[];  // the shared galleries folder before the system root

struct SampleCategory {
    std::string alias;  // ShortID in the collection
    std::string guid;
    std::string title;  // English title in the categories document
    struct Package {
        std::string file;     // name in the source
        std::string id;       // manifest identifier
        std::string content;  // the one content file it installs
    };
    std::vector<Package> packages;
};

// animals (two packages), maps (two), sounds (one): five packages in all.
const std::vector<SampleCategory>& SampleCategories();
const SampleCategory& Category(const std::string& alias);

// Split at line feeds; a last line without one is kept.
std::vector<std::string> Lines(const std::string& text);

bool StartsWith(const std::string& text, const std::string& start);
bool EndsWith(const std::string& text, const std::string& end);

// True when `lines` holds `wanted` in this order, with anything between.
bool HasInOrder(const std::vector<std::string>& lines, const std::vector<std::string>& wanted);

// One finished CLIProgress line of a stage 1 to 4.
std::string ProgressLine(const std::string& word, int overall, const std::string& category, const std::string& item);

// Standard error of code 7, with the reason on a line of its own.
std::string DownloadFailure(const std::string& url, const std::string& reason = "Connection refused");
// Standard error of code 1.
std::string NotWritable(const std::string& path);

class E2EGallery : public ::testing::Test {
protected:
    void SetUp() override;

    // Runs curatool headless in this test's world; checks it printed nothing of its toolkit.
    RunResult Curatool(const std::vector<std::string>& arguments) const;
    RunOptions Options() const;

    // An absolute location of the system as the program sees it under its system root.
    std::string SystemPath(const std::string& absolute) const;
    std::string DefaultInstallDirectory() const;
    std::string StoredConfigurationDirectory() const;

    // The collection copy's DefaultSource.
    void SetDefaultSource(const std::string& url);

    // Writes packages and gallery_categories.xml for the sample gallery into `folder`. Every
    // category is at "1.0" unless `versions` says otherwise (by alias); `missing` names package
    // files listed in the document but left out of the folder.
    static void WriteSource(const std::string& folder, const std::map<std::string, std::string>& versions = {},
                            const std::vector<std::string>& missing = {});
    // What a package's content file holds at a version.
    static std::string ContentBytes(const std::string& content, const std::string& version);

    // True when every content file of the category is in `gallery` at `version`.
    static bool HasCategory(const std::string& gallery, const std::string& alias, const std::string& version = "1.0");
    // True when no content file of the category is in `gallery`.
    static bool LacksCategory(const std::string& gallery, const std::string& alias);

    // A value of this gallery's repository entry in the settings store; empty when absent.
    std::string RegistryValue(const std::string& key) const;
    bool IsRegistered() const { return !RegistryValue("ImsManifestXml").empty(); }

    // The proxy settings the program reads and keeps.
    void StoreProxy(const std::string& host, int port) const;
    std::string StoredProxyValue(const std::string& key) const;

    std::string m_base;  // everything of this test lives below
    std::string m_home;
    std::string m_config;      // XDG_CONFIG_HOME
    std::string m_root;        // CURATOOL_ROOT
    std::string m_collection;  // a copy of the sample collection
    std::string m_source;      // a local source, written by SetUp
    std::string m_gallery;     // an install destination that does not exist yet
};

// The same world with the local source served over loopback HTTP and the collection's default
// source pointing at it.
class ServedGallery : public E2EGallery {
protected:
    void SetUp() override;

    // What a run that checked the connection and then went its way prints on standard output.
    std::string CheckedThenDone() const;

    ServerProcess m_server;
    std::string m_url;
};

}  // namespace curatool::test
