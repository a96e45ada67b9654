#include "gallery/GalleryContentFiles.h"

#include "gallery/CGalleryActivity.h"
#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/GalleryText.h"

#include <QByteArray>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

fs::path ToFsPath(const CAtlString& path)
{
    const QByteArray bytes = ToFileSystemEncoding(path);
    return fs::path(std::string(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

// Whether `inner` lies within `outer` once links are resolved as far as they exist.
bool StaysInside(const fs::path& inner, const fs::path& outer)
{
    std::error_code error;
    const fs::path resolvedInner = fs::weakly_canonical(inner, error);
    if (error) {
        return false;
    }
    const fs::path resolvedOuter = fs::weakly_canonical(outer, error);
    if (error) {
        return false;
    }
    auto outerPart = resolvedOuter.begin();
    auto innerPart = resolvedInner.begin();
    for (; outerPart != resolvedOuter.end(); ++outerPart, ++innerPart) {
        if (outerPart->empty()) {
            continue;  // trailing separator
        }
        if (innerPart == resolvedInner.end() || *innerPart != *outerPart) {
            return false;
        }
    }
    return true;
}

// The answer of StaysInside found from the names alone, when they settle it: both absolute,
// neither with a "." or ".." component, `inner` below `outer` by its components, and no link
// among the components between them (one lstat each, up to the first that does not exist).
// Anything else is left to the resolving check, which gives the same answer in every case this
// one takes: what lies above `outer` is the same for both, links or not.
std::optional<bool> StaysInsideByName(const fs::path& inner, const fs::path& outer)
{
    if (!inner.is_absolute() || !outer.is_absolute())
        return std::nullopt;
    for (const fs::path& path : {inner, outer})
        for (const fs::path& part : path)
            if (part == "." || part == "..")
                return std::nullopt;
    auto outerPart = outer.begin();
    auto innerPart = inner.begin();
    for (; outerPart != outer.end(); ++outerPart) {
        if (outerPart->empty())
            continue;  // trailing separator
        while (innerPart != inner.end() && innerPart->empty())
            ++innerPart;
        if (innerPart == inner.end() || *innerPart != *outerPart)
            return std::nullopt;
        ++innerPart;
    }
    fs::path walked = outer;
    for (; innerPart != inner.end(); ++innerPart) {
        if (innerPart->empty())
            continue;
        walked /= *innerPart;
        struct stat status {};
        if (::lstat(walked.c_str(), &status) != 0) {
            // Below a missing name no link stands yet; any other failure is the resolving check's.
            if (errno == ENOENT)
                return true;
            return std::nullopt;
        }
        if (S_ISLNK(status.st_mode))
            return std::nullopt;
    }
    return true;
}

bool VisitFolder(CGalleryFolder& folder, const std::function<bool(CGalleryActivity&)>& visit)
{
    for (std::uint32_t i = 0; i < folder.m_activities->GetCount(); ++i) {
        if (!visit(*folder.m_activities->GetAt(i))) {
            return false;
        }
    }
    for (std::uint32_t i = 0; i < folder.m_children->GetCount(); ++i) {
        if (!VisitFolder(*folder.m_children->GetAt(i), visit)) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool IsPathInside(const CAtlString& inner, const CAtlString& outer)
{
    if (inner.IsEmpty() || outer.IsEmpty())
        return false;
    const fs::path innerPath = ToFsPath(inner);
    const fs::path outerPath = ToFsPath(outer);
    if (const std::optional<bool> byName = StaysInsideByName(innerPath, outerPath))
        return *byName;
    return StaysInside(innerPath, outerPath);
}

bool IsContentHrefSafe(const wchar_t* href)
{
    if (IsBlankText(href) || href[0] == L'/') {
        return false;
    }
    const std::wstring name(href);
    std::vector<std::wstring> parts;
    std::size_t start = 0;
    while (start <= name.size()) {
        std::size_t end = name.find(L'/', start);
        if (end == std::wstring::npos) {
            end = name.size();
        }
        const std::wstring part = name.substr(start, end - start);
        if (part == L"..") {
            return false;
        }
        if (!part.empty() && part != L".") {
            parts.push_back(part);
        }
        start = end + 1;
    }
    if (parts.empty()) {
        return false;
    }
    // The gallery's own bookkeeping is never a package's to write: the records and the stored
    // categories document below "Uninstall", and the merged manifest at the top.
    const QString first = QString::fromStdWString(parts.front());
    if (first.compare(QStringLiteral("Uninstall"), Qt::CaseInsensitive) == 0) {
        return false;
    }
    return !(parts.size() == 1 && first.compare(QStringLiteral("imsmanifest.xml"), Qt::CaseInsensitive) == 0);
}

CZoltaFilePath GetContentPath(const CZoltaDirectoryPath& folder, const wchar_t* href)
{
    return folder.GetFile(CAtlString(href));
}

CAtlString NormalizeContentPath(const CAtlString& path)
{
    const std::string normal = ToFsPath(path).lexically_normal().string();
    return CAtlString(QString::fromUtf8(normal.c_str(), static_cast<qsizetype>(normal.size())));
}

void ForEachActivity(const CGalleryManifest& manifest, const std::function<bool(CGalleryActivity&)>& visit)
{
    const CGalleryOrganizationList& organizations = *manifest.GetOrganizations();
    for (std::uint32_t o = 0; o < organizations.GetCount(); ++o) {
        const CGalleryFolderList& roots = *organizations.GetAt(o)->m_items;
        for (std::uint32_t i = 0; i < roots.GetCount(); ++i) {
            if (!VisitFolder(*roots.GetAt(i), visit)) {
                return;
            }
        }
    }
}

HRESULT CopyContentFile(const wchar_t* href, const CZoltaDirectoryPath& from, const CZoltaDirectoryPath& to)
{
    if (!IsContentHrefSafe(href)) {
        return E_FAIL;
    }
    const CZoltaFilePath source = GetContentPath(from, href);
    const CZoltaFilePath target = GetContentPath(to, href);
    if (source.IsSameFile(target)) {
        return S_OK;
    }
    const fs::path targetPath = ToFsPath(target.GetPath());
    // A linked sub-folder could lead the copy, or the folders made for it, out of the gallery.
    if (!StaysInside(targetPath.parent_path(), ToFsPath(to.GetPath()))) {
        return E_FAIL;
    }
    const CZoltaDirectoryPath targetFolder = target.GetFolder();
    if (!targetFolder.Exists() && !targetFolder.Create()) {
        return E_FAIL;
    }
    std::error_code error;
    const fs::file_status standing = fs::symlink_status(targetPath, error);
    if (fs::is_symlink(standing) || fs::is_regular_file(standing)) {
        // Replaced, never written through: a link at the target goes, not what it points at.
        fs::remove(targetPath, error);
    }
    return source.CopyTo(target) ? S_OK : E_FAIL;
}

HRESULT CopyContentFiles(const CGalleryManifest& manifest, const CZoltaDirectoryPath& from,
                         const CZoltaDirectoryPath& to)
{
    HRESULT result = S_OK;
    ForEachActivity(manifest, [&](CGalleryActivity& activity) {
        result = CopyContentFile(activity.m_href, from, to);
        return SUCCEEDED(result);
    });
    return result;
}
