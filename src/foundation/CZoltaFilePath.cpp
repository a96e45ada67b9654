#include "foundation/CZoltaFilePath.h"

#include "foundation/CZoltaDirectoryPath.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <QDir>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool StatPath(const CAtlString& path, struct stat& info)
{
    return !path.IsEmpty() && ::stat(ToFileSystemEncoding(path).constData(), &info) == 0;
}

QString Normalised(const QString& path)
{
    // The working folder is asked only when a name needs it.
    if (path.startsWith(QLatin1Char('/')))
        return QDir::cleanPath(path);
    return QDir::cleanPath(QDir::current().absoluteFilePath(path));
}

bool CopyBytes(FILE* source, FILE* target)
{
    char buffer[64 * 1024];
    size_t count;
    while ((count = std::fread(buffer, 1, sizeof buffer, source)) > 0) {
        if (std::fwrite(buffer, 1, count, target) != count)
            return false;
    }
    return !std::ferror(source);
}

bool SameInode(const CZoltaFilePath& first, const CZoltaFilePath& second)
{
    struct stat a, b;
    return StatPath(first.GetPath(), a) && StatPath(second.GetPath(), b) && a.st_dev == b.st_dev &&
           a.st_ino == b.st_ino;
}

}  // namespace

QByteArray ToFileSystemEncoding(const CAtlString& path)
{
    // Straight to UTF-8 for every valid code point: every file operation comes through here.
    const wchar_t* text = path.GetString();
    const int length = path.GetLength();
    QByteArray bytes;
    bytes.reserve(length);
    for (int i = 0; i < length; ++i) {
        const auto code = static_cast<char32_t>(text[i]);
        if (code < 0x80) {
            bytes.append(static_cast<char>(code));
        } else if (code < 0x800) {
            bytes.append(static_cast<char>(0xC0 | (code >> 6)));
            bytes.append(static_cast<char>(0x80 | (code & 0x3F)));
        } else if (code < 0x10000 && (code < 0xD800 || code > 0xDFFF)) {
            bytes.append(static_cast<char>(0xE0 | (code >> 12)));
            bytes.append(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
            bytes.append(static_cast<char>(0x80 | (code & 0x3F)));
        } else if (code >= 0x10000 && code <= 0x10FFFF) {
            bytes.append(static_cast<char>(0xF0 | (code >> 18)));
            bytes.append(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
            bytes.append(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
            bytes.append(static_cast<char>(0x80 | (code & 0x3F)));
        } else {
            return path.ToQString().toUtf8();  // a surrogate or no code point: Qt's replacement
        }
    }
    return bytes;
}

CAtlString FromFileSystemEncoding(const char* bytes)
{
    return CAtlString(QString::fromUtf8(bytes ? bytes : ""));
}

CZoltaFilePath::CZoltaFilePath(const CAtlString& path)
    : m_path(path)
{}

CZoltaFilePath::CZoltaFilePath(const QString& path)
    : m_path(path)
{}

CZoltaFilePath::CZoltaFilePath(const char* path)
    : m_path(QString::fromUtf8(path ? path : ""))
{}

QString CZoltaFilePath::ToQString() const
{
    return m_path.ToQString();
}

bool CZoltaFilePath::IsEmpty() const
{
    return m_path.IsEmpty();
}

bool CZoltaFilePath::Exists() const
{
    struct stat info;
    return StatPath(m_path, info) && S_ISREG(info.st_mode);
}

bool CZoltaFilePath::IsFolder() const
{
    struct stat info;
    return StatPath(m_path, info) && S_ISDIR(info.st_mode);
}

CZoltaDirectoryPath CZoltaFilePath::GetFolder() const
{
    const QString path = ToQString();
    const qsizetype separator = path.lastIndexOf(QLatin1Char('/'));
    if (separator < 0)
        return CZoltaDirectoryPath();
    // The root keeps its separator: the folder of "/a" is "/".
    return CZoltaDirectoryPath(path.left(separator == 0 ? 1 : separator));
}

CAtlString CZoltaFilePath::GetName() const
{
    const QString path = ToQString();
    return CAtlString(path.mid(path.lastIndexOf(QLatin1Char('/')) + 1));
}

CAtlString CZoltaFilePath::GetExtension() const
{
    const QString name = GetName().ToQString();
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? CAtlString() : CAtlString(name.mid(dot));
}

bool CZoltaFilePath::Remove() const
{
    return !m_path.IsEmpty() && ::unlink(ToFileSystemEncoding(m_path).constData()) == 0;
}

bool CZoltaFilePath::CopyTo(const CZoltaFilePath& target, bool failIfExists) const
{
    if (!Exists() || target.IsEmpty())
        return false;
    if (failIfExists && (target.Exists() || target.IsFolder()))
        return false;
    // Writing a file onto itself would truncate the only copy.
    if (SameInode(*this, target))
        return true;

    FILE* source = OpenFile(m_path, "rb");
    if (!source)
        return false;
    FILE* destination = OpenFile(target.GetPath(), "wb");
    if (!destination) {
        std::fclose(source);
        return false;
    }
    bool copied = CopyBytes(source, destination);
    std::fclose(source);
    copied = (std::fclose(destination) == 0) && copied;
    if (!copied)
        target.Remove();
    return copied;
}

bool CZoltaFilePath::MoveOnto(const CZoltaFilePath& target) const
{
    if (IsEmpty() || target.IsEmpty())
        return false;
    const QByteArray from = ToFileSystemEncoding(m_path);
    const int descriptor = ::open(from.constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return synced && std::rename(from.constData(), ToFileSystemEncoding(target.GetPath()).constData()) == 0;
}

bool CZoltaFilePath::IsSameFile(const CZoltaFilePath& other) const
{
    if (IsEmpty() || other.IsEmpty())
        return IsEmpty() && other.IsEmpty();
    return Normalised(ToQString()) == Normalised(other.ToQString());
}

FILE* OpenFile(const CAtlString& path, const char* mode)
{
    ZOLTA_ASSERT(mode != nullptr);
    if (path.IsEmpty())
        return nullptr;
    return std::fopen(ToFileSystemEncoding(path).constData(), mode);
}

FILE* OpenFile(const CZoltaFilePath& path, const char* mode)
{
    return OpenFile(path.GetPath(), mode);
}

long long GetFileSize(const CAtlString& path)
{
    struct stat info;
    if (!StatPath(path, info))
        return -1;
    return static_cast<long long>(info.st_size);
}

long long GetFileSize(const CZoltaFilePath& path)
{
    return GetFileSize(path.GetPath());
}

CZoltaFilePath MakeTempFile(const CAtlString& extension, const CAtlString& prefix)
{
    CZoltaDirectoryPath folder = GetTempFolderOverride();
    if (folder.IsEmpty())
        folder = GetTempFolder();
    folder.Create();

    QString base = prefix.ToQString();
    if (base.trimmed().isEmpty())
        base = QStringLiteral("SCVTemp");
    // Always numbered, so that two names asked for in a row differ even before either file exists.
    const QString stem = folder.ToQString() + QLatin1Char('/') + base;
    const QString suffix = extension.ToQString();
    CZoltaFilePath candidate;
    do {
        candidate = CZoltaFilePath(stem + QStringLiteral("(%1)").arg(std::rand()) + suffix);
    } while (candidate.Exists() || candidate.IsFolder());
    return candidate;
}

CAtlString SanitizeFileName(const CAtlString& name)
{
    static const QString forbidden = QStringLiteral("<>:\"/\\|?*");
    QString clean;
    for (const QChar character : name.ToQString()) {
        if (!forbidden.contains(character))
            clean.append(character);
    }
    return CAtlString(clean);
}
