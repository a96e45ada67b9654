#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <QString>

#include <filesystem>
#include <string>

// Conversions used where collection text meets XML, Qt and the file system. Text that can hold
// non-ASCII goes through QString, never through the plain 8-bit string constructors.
namespace configuration_text {

QString ToQString(const CAtlString& text);
CAtlString FromQString(const QString& text);
CAtlString FromUtf8(const char* text);  // null gives empty
std::string ToUtf8(const CAtlString& text);
std::filesystem::path ToFileSystemPath(const CAtlString& path);

}  // namespace configuration_text
