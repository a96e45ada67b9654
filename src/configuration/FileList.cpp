#include "configuration/FileList.h"

namespace {

// The components of a relative reference, empty and "." ones dropped.
std::vector<CAtlString> SplitReference(const CAtlString& relative)
{
    std::vector<CAtlString> components;
    int start = 0;
    while (start <= relative.GetLength()) {
        int slash = relative.Find(L'/', start);
        int end = slash < 0 ? relative.GetLength() : slash;
        CAtlString component = relative.Mid(start, end - start);
        if (!component.IsEmpty() && component != L".")
            components.push_back(component);
        start = end + 1;
    }
    return components;
}

CAtlString WithoutTrailingSeparators(CAtlString path)
{
    while (path.GetLength() > 1 && path.GetAt(path.GetLength() - 1) == L'/')
        path = path.Left(path.GetLength() - 1);
    return path;
}

}  // namespace

bool IsContainedReference(const CAtlString& relative)
{
    if (relative.IsEmpty() || relative.GetAt(0) == L'/')
        return false;
    const std::vector<CAtlString> components = SplitReference(relative);
    if (components.empty())
        return false;
    for (const CAtlString& component : components) {
        if (component == L"..")
            return false;
    }
    return true;
}

FileList::FileList() = default;

FileList::~FileList() = default;

void FileList::SetBaseDirectory(const CZoltaDirectoryPath& directory)
{
    m_baseDirectory = directory;
}

void FileList::AddFile(const CZoltaFilePath& path)
{
    if (!path.GetPath().IsEmpty())
        m_files.push_back(path);
}

void FileList::AddDirectory(const CZoltaDirectoryPath& path)
{
    if (!path.GetPath().IsEmpty())
        m_directories.push_back(path);
}

CAtlString FileList::Resolve(const CAtlString& relative) const
{
    const CAtlString base = WithoutTrailingSeparators(m_baseDirectory.GetPath());
    if (relative.IsEmpty() || base.IsEmpty() || !IsContainedReference(relative))
        return CAtlString();
    CAtlString full = base;
    for (const CAtlString& component : SplitReference(relative)) {
        if (full.GetAt(full.GetLength() - 1) != L'/')
            full += L'/';
        full += component;
    }
    return full;
}

void FileList::AddRelativeFile(const CAtlString& path)
{
    const CAtlString full = Resolve(path);
    if (!full.IsEmpty())
        AddFile(CZoltaFilePath(full));
}

void FileList::AddRelativeDirectory(const CAtlString& path)
{
    const CAtlString full = Resolve(path);
    if (!full.IsEmpty())
        AddDirectory(CZoltaDirectoryPath(full));
}

void FileList::Clear()
{
    m_files.clear();
    m_directories.clear();
}
