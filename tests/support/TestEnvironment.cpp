#include "TestEnvironment.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <unistd.h>

namespace fs = std::filesystem;

namespace curatool::test {

namespace {

bool g_createdHere = false;

std::string CreateRoot()
{
    // A death-test child re-runs this binary with the parent's environment: it shares the
    // parent's scratch tree instead of making one it would never clean up.
    const char* inherited = std::getenv("CURATOOL_TEST_SCRATCH_ROOT");
    if (inherited && *inherited && fs::is_directory(inherited))
        return inherited;
    const char* outer = std::getenv("CURATOOL_TEST_TMP");
    std::string base = outer && *outer ? outer : "/tmp";
    std::string pattern = base + "/curatool-test-XXXXXX";
    if (!mkdtemp(pattern.data()))
        std::abort();
    for (const char* sub : {"home", "home/.config", "tmp", "root", "runtime"})
        fs::create_directories(pattern + "/" + sub);
    fs::permissions(pattern + "/runtime", fs::perms::owner_all, fs::perm_options::replace);
    setenv("XDG_RUNTIME_DIR", (pattern + "/runtime").c_str(), 1);
    setenv("HOME", (pattern + "/home").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (pattern + "/home/.config").c_str(), 1);
    setenv("TMPDIR", (pattern + "/tmp").c_str(), 1);
    setenv("CURATOOL_ROOT", (pattern + "/root").c_str(), 1);
    setenv("CURATOOL_TEST_SCRATCH_ROOT", pattern.c_str(), 1);
    g_createdHere = true;
    return pattern;
}

}  // namespace

const std::string& ScratchRoot()
{
    static const std::string root = CreateRoot();
    return root;
}

bool OwnsScratchRoot()
{
    ScratchRoot();
    return g_createdHere;
}

std::string MakeScratchDir(const std::string& name)
{
    static int counter = 0;
    fs::path dir =
        fs::path(ScratchRoot()) / "work" / (name + "-" + std::to_string(getpid()) + "-" + std::to_string(++counter));
    fs::remove_all(dir);
    fs::create_directories(dir);
    return dir.string();
}

bool WriteFile(const std::string& path, const std::string& bytes)
{
    std::error_code ec;
    fs::path p(path);
    if (p.has_parent_path())
        fs::create_directories(p.parent_path(), ec);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    return bool(out);
}

std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

bool Exists(const std::string& path)
{
    std::error_code ec;
    return fs::exists(fs::symlink_status(path, ec));
}

std::vector<std::string> FilesBelow(const std::string& folder)
{
    std::vector<std::string> files;
    std::error_code ec;
    for (auto it = fs::recursive_directory_iterator(folder, ec); !ec && it != fs::recursive_directory_iterator();
         it.increment(ec))
        if (it->is_regular_file())
            files.push_back(it->path().string());
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace curatool::test
