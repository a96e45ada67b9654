#pragma once

#include <string>
#include <vector>

// Names of entries and paths on disk, 8-bit (UTF-8). Both "\" and "/" separate components
// everywhere; a trailing separator marks a folder.
class CZipPathComponent {
public:
    explicit CZipPathComponent(const std::string& path);

    // The last component without a trailing separator ("a/b/c.txt" gives "c.txt").
    std::string GetFileName() const;
    // Everything before the last component, without the separator ("" for a bare name).
    std::string GetFilePath() const;

    static bool IsSeparator(char c) { return c == '/' || c == '\\'; }
    static bool HasTrailingSeparator(const std::string& path) { return !path.empty() && IsSeparator(path.back()); }
    static void RemoveTrailingSeparators(std::string& path);
    // The stored form of a name: every "\" becomes "/".
    static std::string ToArchiveName(std::string name);

    // The components of an entry name as they would land under an extraction folder: empty and
    // "." components dropped, so "./" leaves none: the folder itself. False for a name that could
    // reach outside that folder or cannot be made on this system: empty, absolute, with a ".."
    // component, or with a control character (NUL among them).
    static bool SplitSafely(const std::string& name, std::vector<std::string>& components);

    // Case-blind comparison of two names, "\" and "/" alike; non-ASCII letters compare through
    // their wide lower case.
    static bool NamesEqualNoCase(const std::string& a, const std::string& b);

private:
    std::string m_path;
};
