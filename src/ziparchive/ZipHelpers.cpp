#include "ziparchive/ZipHelpers.h"

#include "ziparchive/CZipArchive.h"
#include "ziparchive/CZipException.h"
#include "ziparchive/CZipMemFile.h"
#include "ziparchive/CZipPathComponent.h"
#include "ziparchive/ZipPlatform.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fnmatch.h>
#include <functional>
#include <new>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace {

std::string Utf8(const CAtlString& text)
{
    std::string bytes;
    ZipPlatform::WideToSingle(text.GetString(), bytes, false);
    return bytes;
}

// Names are UTF-8 in every archive the system makes or reads.
void PrepareArchive(const CZipArchive& zip)
{
    ZipPlatform::SetUseSystemCodePage(false);
    if (!zip.IsClosed())
        ZipPlatform::Trace("CZipArchive::EnableOemConversion: Set it before opening the archive");
}

thread_local std::string t_lastError;

// Runs `work` on a fresh archive opened in `mode`; every archive failure becomes false, and its
// text is kept for ZipTakeLastError.
bool WithArchive(const CZoltaFilePath& archive, int mode, const std::function<bool(CZipArchive&)>& work)
{
    CZipArchive zip;
    PrepareArchive(zip);
    t_lastError.clear();
    try {
        if (!zip.Open(Utf8(archive.GetPath()), mode, 0))
            return false;
        const bool result = work(zip);
        zip.Close();
        return result;
    }
    catch (const CZipException& error) {
        t_lastError = error.GetErrorDescription();
    }
    catch (const std::bad_alloc&) {
        t_lastError = CZipException::GetInternalErrorDescription(CZipException::memError);
    }
    if (!zip.IsClosed())
        zip.Close(true);
    return false;
}

// Every file and folder below `folder`, folders before what they hold, in name order.
void CollectRecursive(const std::string& folder, std::vector<std::string>& out)
{
    DIR* listing = ::opendir(folder.c_str());
    if (!listing)
        return;
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(listing)) {
        const std::string name = entry->d_name;
        if (name != "." && name != ".." && ::fnmatch("*", name.c_str(), 0) == 0)
            names.push_back(name);
    }
    ::closedir(listing);
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
        const std::string path = folder + "/" + name;
        struct stat link;
        struct stat target;
        if (::lstat(path.c_str(), &link) != 0 || ::stat(path.c_str(), &target) != 0)
            continue;
        if (S_ISDIR(target.st_mode)) {
            out.push_back(path);
            // A linked folder is added as a folder but not entered, so no link can loop.
            if (!S_ISLNK(link.st_mode))
                CollectRecursive(path, out);
        } else if (S_ISREG(target.st_mode)) {
            out.push_back(path);
        }
    }
}

std::string FolderText(const CZoltaDirectoryPath& folder)
{
    std::string text = Utf8(folder.GetPath());
    if (text.size() > 1)
        CZipPathComponent::RemoveTrailingSeparators(text);
    return text;
}

bool ExtractIndexToMemory(CZipArchive& zip, int index, unsigned char*& data, size_t& size)
{
    CZipMemFile memory;
    if (!zip.ExtractFile(index, memory))
        return false;
    data = memory.Detach(size);
    return true;
}

}  // namespace

bool ZipAddFile(const CZoltaFilePath& archive, const CAtlString& nameInArchive, const CZoltaFilePath& source)
{
    return WithArchive(archive, CZipArchive::zipOpen, [&](CZipArchive& zip) {
        CZipAddNewFileInfo info(Utf8(source.GetPath()), Utf8(nameInArchive));
        return zip.AddNewFile(info);
    });
}

bool ZipAddFileRelative(const CZoltaFilePath& source, const CZoltaFilePath& archive)
{
    return WithArchive(archive, CZipArchive::zipCreate, [&](CZipArchive& zip) {
        const std::string path = Utf8(source.GetPath());
        zip.SetRootPath(CZipPathComponent(path).GetFilePath());
        CZipAddNewFileInfo info(path, true);
        return zip.AddNewFile(info);
    });
}

bool ZipAddDirectory(const CZoltaDirectoryPath& directory, const CZoltaFilePath& archive)
{
    const std::string root = FolderText(directory);
    if (!ZipPlatform::DirectoryExists(root))
        return false;
    return WithArchive(archive, CZipArchive::zipCreate, [&](CZipArchive& zip) {
        zip.SetRootPath(root);
        std::vector<std::string> paths;
        CollectRecursive(root, paths);
        const std::string archivePath = zip.GetArchivePath();
        for (const std::string& path : paths) {
            if (path == archivePath)  // the archive being written inside the folder it packs
                continue;
            CZipAddNewFileInfo info(path, true);
            if (!zip.AddNewFile(info))
                return false;
        }
        return true;
    });
}

bool ZipExtractToBuffer(const CZoltaFilePath& archive, const CAtlString& name, unsigned char*& data, size_t& size)
{
    data = nullptr;
    size = 0;
    const std::string wanted = Utf8(name);
    return WithArchive(archive, CZipArchive::zipOpenReadOnly, [&](CZipArchive& zip) {
        for (int index = 0; index < zip.GetCount(); ++index) {
            CZipFileHeader header;
            if (zip.GetFileInfo(header, index) && CZipPathComponent::NamesEqualNoCase(header.GetFileName(), wanted))
                return ExtractIndexToMemory(zip, index, data, size);
        }
        return false;
    });
}

bool ZipExtractMatching(const CZoltaFilePath& archive, const CZoltaDirectoryPath& destination)
{
    const std::string target = FolderText(destination);
    return WithArchive(archive, CZipArchive::zipOpenReadOnly, [&](CZipArchive& zip) {
        for (int index = 0; index < zip.GetCount(); ++index) {
            CZipFileHeader header;
            if (!zip.GetFileInfo(header, index) || header.IsDirectory())
                continue;
            const std::string& stored = header.GetFileName();
            if (stored.rfind("sounds\\", 0) != 0 && stored.rfind("sounds/", 0) != 0)
                continue;
            if (!zip.ExtractFile(index, target, false))
                return false;
        }
        return true;
    });
}

bool ZipExtractFile(const CZoltaFilePath& archive, const CAtlString& name, const CZoltaDirectoryPath& destination)
{
    const std::string target = FolderText(destination);
    const std::string wanted = Utf8(name);
    std::string result;
    const bool extracted = WithArchive(archive, CZipArchive::zipOpenReadOnly, [&](CZipArchive& zip) {
        const int index = zip.FindFile(wanted, false);
        if (index < 0)
            return false;
        CZipFileHeader header;
        zip.GetFileInfo(header, index);
        result = target + "/" + CZipPathComponent(header.GetFileName()).GetFileName();
        return zip.ExtractFile(index, target, false);
    });
    return extracted && (ZipPlatform::FileExists(result) || ZipPlatform::DirectoryExists(result));
}

bool ZipExtractToMemory(const CZoltaFilePath& archive, const CAtlString& name, unsigned char*& buffer, size_t& size)
{
    buffer = nullptr;
    size = 0;
    const std::string wanted = Utf8(name);
    return WithArchive(archive, CZipArchive::zipOpenReadOnly, [&](CZipArchive& zip) {
        const int index = zip.FindFile(wanted, false);
        return index >= 0 && ExtractIndexToMemory(zip, index, buffer, size);
    });
}

bool ZipExtractAll(const CZoltaFilePath& archive, const CZoltaDirectoryPath& destination, bool archiveTimes)
{
    const std::string target = FolderText(destination);
    return WithArchive(archive, CZipArchive::zipOpenReadOnly, [&](CZipArchive& zip) {
        // Each entry stops at its declared size, so their sum is all the archive may write: it must
        // fit before the first byte goes.
        uint64_t declared = 0;
        for (int index = 0; index < zip.GetCount(); ++index) {
            CZipFileHeader header;
            if (zip.GetFileInfo(header, index))
                declared += header.GetSize();
        }
        const int64_t available = ZipPlatform::FreeSpace(target);
        if (available >= 0 && declared > uint64_t(available))
            CZipException::ThrowErrno(ENOSPC, target);
        zip.SetRestoreTimes(archiveTimes);
        for (int index = 0; index < zip.GetCount(); ++index)
            if (!zip.ExtractFile(index, target, true))
                return false;
        return true;
    });
}

std::string ZipTakeLastError()
{
    return std::exchange(t_lastError, std::string());
}
