#include "ziparchive/CZipFileHeader.h"

#include "ziparchive/CZipAbstractFile.h"
#include "ziparchive/CZipException.h"
#include "ziparchive/CZipPathComponent.h"
#include "ziparchive/ZipBytes.h"
#include "ziparchive/ZipPlatform.h"

#include <sys/stat.h>

using namespace zipbytes;

namespace {

constexpr uint16_t kExtendedTimeTag = 0x5455;

bool IsUnixLike(int system)
{
    // Unix, and the later Unix-based systems that store their modes the same way.
    return system == 3 || system == 19;
}

}  // namespace

std::wstring CZipFileHeader::GetFileNameWide() const
{
    std::wstring wide;
    ZipPlatform::SingleToWide(m_fileName, wide, ZipPlatform::GetUseSystemCodePage());
    return wide;
}

void CZipFileHeader::SetFileName(const std::string& name)
{
    m_fileName = CZipPathComponent::ToArchiveName(name);
}

bool CZipFileHeader::IsDirectory() const
{
    if (CZipPathComponent::HasTrailingSeparator(m_fileName))
        return true;
    if (IsUnixLike(GetSystemCompatibility()) && (m_uExternalAttr >> 16) != 0)
        return S_ISDIR(m_uExternalAttr >> 16);
    return (m_uExternalAttr & 0x10) != 0;  // the DOS folder attribute
}

bool CZipFileHeader::IsSymbolicLink() const
{
    const uint32_t mode = m_uExternalAttr >> 16;
    return (mode & S_IFMT) == S_IFLNK;
}

bool CZipFileHeader::FindUnixTime(time_t& modified) const
{
    const auto* extra = reinterpret_cast<const unsigned char*>(m_centralExtra.data());
    size_t at = 0;
    while (at + 4 <= m_centralExtra.size()) {
        const uint16_t tag = Get16(extra + at);
        const uint16_t size = Get16(extra + at + 2);
        if (at + 4 + size > m_centralExtra.size())
            return false;
        if (tag == kExtendedTimeTag && size >= 5 && (extra[at + 4] & 1)) {
            modified = time_t(int32_t(Get32(extra + at + 5)));
            return true;
        }
        at += 4 + size;
    }
    return false;
}

time_t CZipFileHeader::GetTime() const
{
    if (m_hasUnixTime)
        return m_unixTime;
    time_t modified;
    if (FindUnixTime(modified))
        return modified;
    // The files of an archive mostly share a few times, and each local conversion reads the
    // zone anew: the last one is kept per thread.
    thread_local uint32_t lastStamp = 0;
    thread_local time_t lastTime = 0;
    const uint32_t stamp = (uint32_t(m_uModDate) << 16) | m_uModTime;
    if (stamp == lastStamp && stamp != 0)
        return lastTime;
    struct tm parts = {};
    parts.tm_year = ((m_uModDate >> 9) & 0x7F) + 80;
    parts.tm_mon = ((m_uModDate >> 5) & 0x0F) - 1;
    parts.tm_mday = m_uModDate & 0x1F;
    parts.tm_hour = (m_uModTime >> 11) & 0x1F;
    parts.tm_min = (m_uModTime >> 5) & 0x3F;
    parts.tm_sec = (m_uModTime & 0x1F) * 2;
    parts.tm_isdst = -1;
    lastTime = mktime(&parts);
    lastStamp = stamp;
    return lastTime;
}

void CZipFileHeader::SetTime(time_t modified)
{
    struct tm parts;
    if (!localtime_r(&modified, &parts) || parts.tm_year < 80) {
        parts = {};
        parts.tm_year = 80;
        parts.tm_mday = 1;
    }
    m_uModDate = uint16_t(((parts.tm_year - 80) << 9) | ((parts.tm_mon + 1) << 5) | parts.tm_mday);
    m_uModTime = uint16_t((parts.tm_hour << 11) | (parts.tm_min << 5) | (parts.tm_sec / 2));
    m_hasUnixTime = true;
    m_unixTime = modified;
    // The extended time keeps the exact second, which the DOS fields round to two.
    m_centralExtra.resize(9);
    auto* extra = reinterpret_cast<unsigned char*>(m_centralExtra.data());
    Put16(extra, kExtendedTimeTag);
    Put16(extra + 2, 5);
    extra[4] = 1;
    Put32(extra + 5, uint32_t(int32_t(modified)));
}

std::string CZipFileHeader::MakeLocalExtra() const
{
    // The local copy of the extended time has the same shape as the central one.
    return m_hasUnixTime ? m_centralExtra : std::string();
}

size_t CZipFileHeader::ReadCentral(const unsigned char* record, size_t available)
{
    if (available < size_t(kCentralHeaderSize) || Get32(record) != kCentralHeaderSignature)
        return 0;
    const size_t nameLength = Get16(record + 28);
    const size_t extraLength = Get16(record + 30);
    const size_t commentLength = Get16(record + 32);
    const size_t total = kCentralHeaderSize + nameLength + extraLength + commentLength;
    if (total > available)
        return 0;
    m_uVersionMadeBy = Get16(record + 4);
    m_uVersionNeeded = Get16(record + 6);
    m_uFlag = Get16(record + 8);
    m_uMethod = Get16(record + 10);
    m_uModTime = Get16(record + 12);
    m_uModDate = Get16(record + 14);
    m_uCrc32 = Get32(record + 16);
    m_uComprSize = Get32(record + 20);
    m_uUncomprSize = Get32(record + 24);
    m_uDiskStart = Get16(record + 34);
    m_uInternalAttr = Get16(record + 36);
    m_uExternalAttr = Get32(record + 38);
    m_uOffset = Get32(record + 42);
    const char* variable = reinterpret_cast<const char*>(record + kCentralHeaderSize);
    m_fileName.assign(variable, nameLength);
    m_centralExtra.assign(variable + nameLength, extraLength);
    m_comment.assign(variable + nameLength + extraLength, commentLength);
    m_hasUnixTime = FindUnixTime(m_unixTime);
    return total;
}

void CZipFileHeader::PutSharedFields(unsigned char* at, std::size_t extraLength) const
{
    Put16(at, m_uVersionNeeded);
    Put16(at + 2, m_uFlag);
    Put16(at + 4, m_uMethod);
    Put16(at + 6, m_uModTime);
    Put16(at + 8, m_uModDate);
    Put32(at + 10, m_uCrc32);
    Put32(at + 14, m_uComprSize);
    Put32(at + 18, m_uUncomprSize);
    Put16(at + 22, uint16_t(m_fileName.size()));
    Put16(at + 24, uint16_t(extraLength));
}

void CZipFileHeader::WriteCentral(std::string& out) const
{
    unsigned char fixed[kCentralHeaderSize];
    Put32(fixed, kCentralHeaderSignature);
    Put16(fixed + 4, m_uVersionMadeBy);
    PutSharedFields(fixed + 6, m_centralExtra.size());
    Put16(fixed + 32, uint16_t(m_comment.size()));
    Put16(fixed + 34, m_uDiskStart);
    Put16(fixed + 36, m_uInternalAttr);
    Put32(fixed + 38, m_uExternalAttr);
    Put32(fixed + 42, m_uOffset);
    out.append(reinterpret_cast<const char*>(fixed), sizeof fixed);
    out += m_fileName;
    out += m_centralExtra;
    out += m_comment;
}

void CZipFileHeader::WriteLocal(CZipAbstractFile& file)
{
    const std::string extra = MakeLocalExtra();
    std::string bytes(kLocalHeaderSize, '\0');
    auto* fixed = reinterpret_cast<unsigned char*>(bytes.data());
    Put32(fixed, kLocalHeaderSignature);
    PutSharedFields(fixed + 4, extra.size());
    bytes += m_fileName;
    bytes += extra;
    file.Write(bytes.data(), bytes.size());
}

void CZipFileHeader::UpdateLocal(CZipAbstractFile& file, uint64_t bytesBeforeZip)
{
    unsigned char fields[12];
    Put32(fields, m_uCrc32);
    Put32(fields + 4, m_uComprSize);
    Put32(fields + 8, m_uUncomprSize);
    const uint64_t resume = file.GetPosition();
    file.Seek(int64_t(bytesBeforeZip + m_uOffset + 14));
    file.Write(fields, sizeof fields);
    // The method may have changed from deflated to stored after the data was written.
    unsigned char method[2];
    Put16(method, m_uMethod);
    file.Seek(int64_t(bytesBeforeZip + m_uOffset + 8));
    file.Write(method, 2);
    Put16(method, m_uVersionNeeded);
    file.Seek(int64_t(bytesBeforeZip + m_uOffset + 4));
    file.Write(method, 2);
    file.Seek(int64_t(resume));
}

uint64_t CZipFileHeader::LocateData(CZipAbstractFile& file, uint64_t bytesBeforeZip, uint64_t dataLimit,
                                    const std::string& archiveName) const
{
    const uint64_t local = bytesBeforeZip + m_uOffset;
    if (local + kLocalHeaderSize > dataLimit)
        CZipException::Throw(CZipException::badZipFile, archiveName);
    unsigned char fixed[kLocalHeaderSize];
    file.Seek(int64_t(local));
    if (!file.ReadExactly(fixed, sizeof fixed) || Get32(fixed) != kLocalHeaderSignature)
        CZipException::Throw(CZipException::badZipFile, archiveName);
    const uint64_t data = local + kLocalHeaderSize + Get16(fixed + 26) + Get16(fixed + 28);
    // The central sizes are the ones that count: with a data descriptor the local ones are 0.
    if (data > dataLimit || uint64_t(m_uComprSize) > dataLimit - data)
        CZipException::Throw(CZipException::badZipFile, archiveName);
    return data;
}
