#pragma once

// Text and paths in the forms the tests compare: UTF-8 std::string on the test side, CAtlString
// and the path classes on the program's side.

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"

#include <QString>

#include <string>

namespace curatool::test {

// UTF-8 (or a wide literal) to the program's string.
inline CAtlString W(const std::string& utf8)
{
    return CAtlString(QString::fromStdString(utf8));
}
inline CAtlString W(const wchar_t* text)
{
    return CAtlString(text);
}

// The program's string (or a wide literal) as UTF-8.
inline std::string U(const CAtlString& text)
{
    return text.ToQString().toStdString();
}
inline std::string U(const wchar_t* text)
{
    return text ? U(CAtlString(text)) : std::string();
}

inline CZoltaFilePath FilePath(const std::string& utf8)
{
    return CZoltaFilePath(QString::fromStdString(utf8));
}
inline CZoltaDirectoryPath FolderPath(const std::string& utf8)
{
    return CZoltaDirectoryPath(QString::fromStdString(utf8));
}

inline bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

}  // namespace curatool::test
