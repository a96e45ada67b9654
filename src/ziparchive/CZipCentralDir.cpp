#include "ziparchive/CZipCentralDir.h"

#include "ziparchive/CZipAbstractFile.h"
#include "ziparchive/CZipAutoBuffer.h"
#include "ziparchive/CZipException.h"
#include "ziparchive/CZipPathComponent.h"
#include "ziparchive/ZipBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

using namespace zipbytes;

namespace {

constexpr size_t kMaxComment = 0xFFFF;

bool StartsCentralHeader(CZipAbstractFile& file, uint64_t offset)
{
    unsigned char signature[4];
    file.Seek(int64_t(offset));
    return file.ReadExactly(signature, 4) && Get32(signature) == kCentralHeaderSignature;
}

}  // namespace

void CZipCentralDir::Clear()
{
    m_headers.clear();
    m_bytesBeforeZip = 0;
    m_centralStart = 0;
    m_comment.clear();
}

uint64_t CZipCentralDir::FindEndRecord(CZipAbstractFile& file, const std::string& archiveName, unsigned char* record)
{
    const uint64_t length = file.GetLength();
    if (length < uint64_t(kEndRecordSize))
        CZipException::Throw(CZipException::cdirNotFound, archiveName);
    const size_t tail = size_t(std::min<uint64_t>(length, kEndRecordSize + kMaxComment));
    CZipAutoBuffer buffer(tail);
    auto* bytes = reinterpret_cast<unsigned char*>(buffer.GetBuffer());
    file.Seek(int64_t(length - tail));
    if (!file.ReadExactly(bytes, tail))
        CZipException::Throw(CZipException::cdirNotFound, archiveName);

    // Walk backwards; a record whose comment runs past the end of the file is taken only when no
    // better one exists, since a real comment may itself contain the signature bytes.
    size_t fallback = SIZE_MAX;
    for (size_t at = tail - kEndRecordSize + 1; at-- > 0;) {
        if (Get32(bytes + at) != kEndRecordSignature)
            continue;
        const size_t commentLength = Get16(bytes + at + 20);
        if (at + kEndRecordSize + commentLength <= tail) {
            fallback = at;
            break;
        }
        if (fallback == SIZE_MAX)
            fallback = at;
    }
    if (fallback == SIZE_MAX)
        CZipException::Throw(CZipException::cdirNotFound, archiveName);
    std::memcpy(record, bytes + fallback, kEndRecordSize);
    const size_t commentLength = std::min<size_t>(Get16(record + 20), tail - fallback - kEndRecordSize);
    m_comment.assign(reinterpret_cast<const char*>(bytes + fallback + kEndRecordSize), commentLength);
    return length - tail + fallback;
}

void CZipCentralDir::Read(CZipAbstractFile& file, const std::string& archiveName)
{
    Clear();
    unsigned char record[kEndRecordSize];
    const uint64_t endRecord = FindEndRecord(file, archiveName, record);

    const uint16_t thisDisk = Get16(record + 4);
    const uint16_t centralDisk = Get16(record + 6);
    const uint16_t entriesHere = Get16(record + 8);
    const uint16_t entries = Get16(record + 10);
    const uint32_t centralSize = Get32(record + 12);
    const uint32_t centralOffset = Get32(record + 16);
    if (thisDisk != centralDisk || entriesHere != entries)
        CZipException::Throw(CZipException::badZipFile, archiveName);
    if (thisDisk != 0)  // the last volume of a set whose earlier volumes are not here
        CZipException::Throw(CZipException::cdirNotFound, archiveName);
    if (centralSize > endRecord || centralOffset > endRecord - centralSize)
        CZipException::Throw(CZipException::badZipFile, archiveName);
    m_centralStart = endRecord - centralSize;
    m_bytesBeforeZip = m_centralStart - centralOffset;
    if (m_bytesBeforeZip != 0 && entries > 0 && StartsCentralHeader(file, centralOffset)) {
        // Records written between the table and the end record (as some writers of streamed
        // input do) make the table look further along than it is: the offset itself is right.
        m_centralStart = centralOffset;
        m_bytesBeforeZip = 0;
    }

    CZipAutoBuffer buffer(centralSize);
    auto* bytes = reinterpret_cast<const unsigned char*>(buffer.GetBuffer());
    file.Seek(int64_t(m_centralStart));
    if (!file.ReadExactly(buffer.GetBuffer(), centralSize))
        CZipException::Throw(CZipException::badZipFile, archiveName);

    m_headers.resize(entries);
    size_t at = 0;
    for (CZipFileHeader& header : m_headers) {
        const size_t used = header.ReadCentral(bytes + at, centralSize - at);
        if (used == 0)
            CZipException::Throw(CZipException::badZipFile, archiveName);
        at += used;
    }
    RefuseOverlaps(archiveName);
}

void CZipCentralDir::RefuseOverlaps(const std::string& archiveName) const
{
    // Each entry owns at least its local header and its compressed bytes. Entries that share bytes
    // would let one small stream be extracted many times over, so such a table is damage.
    std::vector<std::pair<uint64_t, uint64_t>> spans;
    spans.reserve(m_headers.size());
    for (const CZipFileHeader& header : m_headers)
        spans.emplace_back(header.m_uOffset, uint64_t(header.m_uOffset) + kLocalHeaderSize + header.m_uComprSize);
    std::sort(spans.begin(), spans.end());
    for (size_t i = 1; i < spans.size(); ++i)
        if (spans[i].first < spans[i - 1].second)
            CZipException::Throw(CZipException::badZipFile, archiveName);
}

void CZipCentralDir::Write(CZipAbstractFile& file, const std::string& archiveName) const
{
    const uint64_t start = file.GetPosition();
    std::string bytes;
    for (const CZipFileHeader& header : m_headers) {
        header.WriteCentral(bytes);
        if (bytes.size() >= 65536) {
            file.Write(bytes.data(), bytes.size());
            bytes.clear();
        }
    }
    file.Write(bytes.data(), bytes.size());
    const uint64_t end = file.GetPosition();
    const uint64_t offset = start - m_bytesBeforeZip;
    if (end - start > 0xFFFFFFFFu || offset > 0xFFFFFFFFu || m_headers.size() > 0xFFFF)
        CZipException::ThrowErrno(EFBIG, archiveName);

    unsigned char record[kEndRecordSize] = {};
    Put32(record, kEndRecordSignature);
    Put16(record + 8, uint16_t(m_headers.size()));
    Put16(record + 10, uint16_t(m_headers.size()));
    Put32(record + 12, uint32_t(end - start));
    Put32(record + 16, uint32_t(offset));
    Put16(record + 20, uint16_t(std::min(m_comment.size(), kMaxComment)));
    file.Write(record, sizeof record);
    file.Write(m_comment.data(), std::min(m_comment.size(), kMaxComment));
    file.SetLength(file.GetPosition());
    file.Flush();
}

int CZipCentralDir::FindFile(const std::string& name, bool caseSensitive) const
{
    const std::string wanted = CZipPathComponent::ToArchiveName(name);
    for (size_t i = 0; i < m_headers.size(); ++i) {
        const std::string& stored = m_headers[i].GetFileName();
        if (caseSensitive ? CZipPathComponent::ToArchiveName(stored) == wanted
                          : CZipPathComponent::NamesEqualNoCase(stored, wanted))
            return int(i);
    }
    return -1;
}
