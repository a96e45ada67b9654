#include "configuration/CAutoDirectoryDestructor.h"

#include <filesystem>
#include <system_error>

CAutoDirectoryDestructor::CAutoDirectoryDestructor(const CZoltaDirectoryPath& directory)
    : m_directory(directory)
{}

CAutoDirectoryDestructor::~CAutoDirectoryDestructor()
{
    const std::filesystem::path path(m_directory.GetPath().ToUtf8().GetString());
    if (path.empty())
        return;
    // remove_all never follows symbolic links, so whatever an unpacked archive left behind can
    // only take its own folder with it.
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}
