#include "configuration/CollectionFolders.h"

#include <algorithm>
#include <system_error>

namespace fs = std::filesystem;

namespace collection_folders {

bool IsInside(const fs::path& path, const fs::path& folder)
{
    std::error_code error;
    const fs::path resolvedFolder = fs::weakly_canonical(folder, error);
    if (error)
        return false;
    // The entry itself may be a link; only the folders leading to it are resolved.
    const fs::path resolvedParent = fs::weakly_canonical(path.parent_path(), error);
    if (error)
        return false;
    const fs::path resolved = resolvedParent / path.filename();
    auto [folderEnd, unused] =
        std::mismatch(resolvedFolder.begin(), resolvedFolder.end(), resolved.begin(), resolved.end());
    (void)unused;
    return folderEnd == resolvedFolder.end() && resolved != resolvedFolder;
}

bool CopyTree(const fs::path& from, const fs::path& to)
{
    std::error_code error;
    fs::create_directories(to, error);
    if (error)
        return false;
    bool copied = true;
    fs::directory_iterator entries(from, error);
    if (error)
        return false;
    for (const fs::directory_entry& entry : entries) {
        const fs::file_status status = entry.symlink_status(error);
        if (error) {
            copied = false;
            continue;
        }
        const fs::path target = to / entry.path().filename();
        if (fs::is_directory(status)) {
            copied &= CopyTree(entry.path(), target);
        } else if (fs::is_regular_file(status)) {
            fs::copy_file(entry.path(), target, fs::copy_options::overwrite_existing, error);
            copied &= !error;
        }
    }
    return copied;
}

}  // namespace collection_folders
