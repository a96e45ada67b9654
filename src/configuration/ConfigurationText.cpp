#include "configuration/ConfigurationText.h"

namespace configuration_text {

QString ToQString(const CAtlString& text)
{
    return text.ToQString();
}

CAtlString FromQString(const QString& text)
{
    return CAtlString(text);
}

CAtlString FromUtf8(const char* text)
{
    return text ? FromQString(QString::fromUtf8(text)) : CAtlString();
}

std::string ToUtf8(const CAtlString& text)
{
    return ToQString(text).toStdString();
}

std::filesystem::path ToFileSystemPath(const CAtlString& path)
{
    return std::filesystem::path(ToUtf8(path));
}

}  // namespace configuration_text
