#include "ziparchive/CZipArchive.h"

#include "ziparchive/CZipAutoBuffer.h"
#include "ziparchive/CZipException.h"
#include "ziparchive/CZipFile.h"
#include "ziparchive/CZipPathComponent.h"
#include "ziparchive/ZipBytes.h"
#include "ziparchive/ZipPlatform.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uint16_t kVersionDeflate = 20;
constexpr uint16_t kVersionStored = 10;
constexpr size_t kMinBuffer = 1024;

bool IsAscii(const std::string& text)
{
    for (char c : text)
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
    return true;
}

size_t ClampBuffer(size_t size)
{
    return size < kMinBuffer ? kMinBuffer : size;
}

}  // namespace

CZipArchive::CZipArchive() = default;

CZipArchive::~CZipArchive()
{
    if (!IsClosed())
        Close(true);
}

bool CZipArchive::CheckOpen(const char* file, int line) const
{
    if (IsClosed()) {
        ZipPlatform::Trace("%s(%i) : ZipArchive is closed.\n", file, line);
        return false;
    }
    return true;
}

void CZipArchive::ThrowError(int cause) const
{
    CZipException::Throw(cause, m_archiveName);
}

bool CZipArchive::Open(const std::string& path, int mode, int volumeSize)
{
    if (!IsClosed()) {
        ZipPlatform::Trace("%s(%i) : ZipArchive already opened.\n", __FILE__, __LINE__);
        return false;
    }
    if (volumeSize != 0) {
        ZipPlatform::Trace("%s(%i) : Disk spanning is not available.\n", __FILE__, __LINE__);
        return false;
    }
    auto file = std::make_unique<CZipFile>();
    file->Open(path, mode == zipCreate ? CZipFile::modeCreate
                     : mode == zipOpen ? CZipFile::modeReadWrite
                                       : CZipFile::modeRead);
    m_ownedFile = std::move(file);
    try {
        OpenStorage(*m_ownedFile, mode);
    }
    catch (...) {
        m_ownedFile.reset();
        throw;
    }
    return true;
}

bool CZipArchive::Open(CZipAbstractFile& file, int mode)
{
    if (!IsClosed()) {
        ZipPlatform::Trace("%s(%i) : ZipArchive already opened.\n", __FILE__, __LINE__);
        return false;
    }
    OpenStorage(file, mode);
    return true;
}

void CZipArchive::OpenStorage(CZipAbstractFile& file, int mode)
{
    m_archiveName = file.GetFilePath();
    if (zlibVersion()[0] != ZLIB_VERSION[0])
        ThrowError(CZipException::versionError);
    m_iMode = mode;
    m_iArchiveSystCompatib = ZipPlatform::kSystemUnix;
    try {
        if (mode == zipCreate) {
            m_centralDir.Clear();
            file.SetLength(0);
            file.Seek(0);
            m_writePosition = 0;
            m_bDirty = true;  // even an archive with nothing in it gets its end record
        } else {
            m_centralDir.Read(file, m_archiveName);
            m_writePosition = m_centralDir.m_centralStart;
            m_bDirty = false;
            if (!m_centralDir.m_headers.empty()) {
                const int system = m_centralDir.m_headers.front().GetSystemCompatibility();
                if (system >= 0 && system <= 19)
                    m_iArchiveSystCompatib = system;
            }
        }
    }
    catch (...) {
        m_centralDir.Clear();
        throw;
    }
    m_pStorage = &file;
}

void CZipArchive::ResetState()
{
    m_pStorage = nullptr;
    m_ownedFile.reset();
    m_centralDir.Clear();
    m_bDirty = false;
    m_writePosition = 0;
    m_openIndex = -1;
    m_input.reset();
    m_inputSize = 0;
    m_madeFolder.clear();
}

void CZipArchive::Close(bool afterException, bool updateTimeStamp)
{
    if (!CheckOpen(__FILE__, __LINE__))
        return;
    if (m_openIndex >= 0)
        CloseFile(true);
    time_t newest = 0;
    if (updateTimeStamp)
        for (const CZipFileHeader& header : m_centralDir.m_headers)
            newest = std::max(newest, header.GetTime());
    const std::string path = m_ownedFile ? m_archiveName : std::string();
    try {
        if (m_bDirty && m_iMode != zipOpenReadOnly) {
            m_pStorage->Seek(int64_t(m_writePosition));
            m_centralDir.Write(*m_pStorage, m_archiveName);
        }
    }
    catch (...) {
        if (!afterException) {
            ResetState();
            throw;
        }
    }
    ResetState();
    if (updateTimeStamp && !path.empty() && newest > 0)
        ZipPlatform::SetFileModTime(path, newest);
}

int CZipArchive::GetCount() const
{
    return IsClosed() ? 0 : int(m_centralDir.m_headers.size());
}

bool CZipArchive::GetFileInfo(CZipFileHeader& header, int index) const
{
    if (!CheckOpen(__FILE__, __LINE__) || index < 0 || index >= GetCount())
        return false;
    header = m_centralDir.m_headers[size_t(index)];
    return true;
}

int CZipArchive::FindFile(const std::string& name, bool caseSensitive) const
{
    if (!CheckOpen(__FILE__, __LINE__))
        return -1;
    return m_centralDir.FindFile(name, caseSensitive);
}

void CZipArchive::SetRootPath(const std::string& root)
{
    m_rootPath = root;
    CZipPathComponent::RemoveTrailingSeparators(m_rootPath);
}

// ---- adding ----

std::string CZipArchive::MakeEntryName(const CZipAddNewFileInfo& info, bool isDirectory) const
{
    std::string name = info.m_szFileNameInZip;
    if (name.empty() && !info.m_pFile) {
        if (!info.m_bFullPath) {
            name = CZipPathComponent(info.m_szFilePath).GetFileName();
        } else {
            name = info.m_szFilePath;
            if (!m_rootPath.empty() && name.size() > m_rootPath.size() &&
                name.compare(0, m_rootPath.size(), m_rootPath) == 0 &&
                CZipPathComponent::IsSeparator(name[m_rootPath.size()]))
                name.erase(0, m_rootPath.size());
        }
        // A stored name is always relative.
        size_t lead = 0;
        while (lead < name.size() && CZipPathComponent::IsSeparator(name[lead]))
            ++lead;
        name.erase(0, lead);
    }
    if (name.empty())
        name = "file" + std::to_string(GetCount());
    name = CZipPathComponent::ToArchiveName(name);
    if (isDirectory && !CZipPathComponent::HasTrailingSeparator(name))
        name += '/';
    if (!isDirectory)
        CZipPathComponent::RemoveTrailingSeparators(name);
    return name;
}

bool CZipArchive::AddNewFile(CZipAddNewFileInfo& info)
{
    if (!CheckOpen(__FILE__, __LINE__))
        return false;
    if (m_iMode == zipOpenReadOnly) {
        ZipPlatform::Trace("%s(%i) : ZipArchive is read-only.\n", __FILE__, __LINE__);
        return false;
    }
    if (m_openIndex >= 0) {
        ZipPlatform::Trace("%s(%i) : A file already opened.\n", __FILE__, __LINE__);
        return false;
    }
    if (GetCount() >= kMaxEntries) {
        ZipPlatform::Trace("%s(%i) : Maximum file count inside archive reached.\n", __FILE__, __LINE__);
        return false;
    }
    if (info.m_iReplaceIndex >= 0) {
        ZipPlatform::Trace("%s(%i) : Replacing entries is not available.\n", __FILE__, __LINE__);
        return false;
    }

    CZipFileHeader header;
    uint32_t mode = S_IFREG | 0644;
    time_t modified = std::time(nullptr);
    CZipFile sourceFile;
    CZipAbstractFile* source = info.m_pFile;
    if (!source) {
        struct stat status;
        if (::stat(info.m_szFilePath.c_str(), &status) != 0)
            CZipException::ThrowErrno(errno, info.m_szFilePath);
        mode = uint32_t(status.st_mode);
        modified = status.st_mtime;
        if (!S_ISDIR(status.st_mode)) {
            sourceFile.Open(info.m_szFilePath, CZipFile::modeRead);
            source = &sourceFile;
        }
    }
    const bool isDirectory = S_ISDIR(mode);
    header.SetFileName(MakeEntryName(info, isDirectory));
    if (header.m_fileName.size() > 0xFFFF)
        ThrowError(CZipException::tooLongFileName);

    header.m_uVersionMadeBy = uint16_t((ZipPlatform::kSystemUnix << 8) | kVersionDeflate);
    header.m_uFlag = IsAscii(header.m_fileName) ? 0 : CZipFileHeader::flagUtf8;
    header.m_uMethod =
        (isDirectory || info.m_iComprLevel == 0) ? CZipFileHeader::methodStored : CZipFileHeader::methodDeflated;
    header.m_uVersionNeeded =
        (isDirectory || header.m_uMethod == CZipFileHeader::methodDeflated) ? kVersionDeflate : kVersionStored;
    header.m_uExternalAttr = (mode << 16) | (isDirectory ? 0x10 : 0);
    header.SetTime(modified);
    const uint64_t offset = m_writePosition - m_centralDir.m_bytesBeforeZip;
    if (offset > 0xFFFFFFFFu)
        CZipException::ThrowErrno(EFBIG, m_archiveName);
    header.m_uOffset = uint32_t(offset);

    m_pStorage->Seek(int64_t(m_writePosition));
    m_bDirty = true;
    header.WriteLocal(*m_pStorage);
    if (source)
        WriteEntryData(header, *source, info);
    const uint64_t end = m_pStorage->GetPosition();
    header.UpdateLocal(*m_pStorage, m_centralDir.m_bytesBeforeZip);
    // Only a whole entry joins the directory, so a failure above leaves the archive as it was.
    m_centralDir.m_headers.push_back(std::move(header));
    m_writePosition = end;
    return true;
}

void CZipArchive::WriteEntryData(CZipFileHeader& header, CZipAbstractFile& source, const CZipAddNewFileInfo& info)
{
    const size_t bufferSize = ClampBuffer(info.m_nBufSize);
    const uint64_t dataStart = m_pStorage->GetPosition();
    const uint64_t sourceStart = source.GetPosition();
    if (header.m_uMethod == CZipFileHeader::methodStored) {
        StoreFrom(header, source, bufferSize);
        return;
    }
    DeflateFrom(header, source, bufferSize, info.m_iComprLevel);
    const bool checkEfficiency = (info.m_iSmartLevel & CZipAddNewFileInfo::zipsmCheckForEff) != 0;
    if (checkEfficiency && header.m_uComprSize >= header.m_uUncomprSize && header.m_uUncomprSize > 0) {
        // Deflate did not pay: store the bytes instead, over the deflated ones.
        source.Seek(int64_t(sourceStart));
        m_pStorage->Seek(int64_t(dataStart));
        header.m_uMethod = CZipFileHeader::methodStored;
        header.m_uVersionNeeded = kVersionStored;
        StoreFrom(header, source, bufferSize);
        m_pStorage->SetLength(m_pStorage->GetPosition());
    }
}

void CZipArchive::StoreFrom(CZipFileHeader& header, CZipAbstractFile& source, size_t bufferSize)
{
    CZipAutoBuffer buffer(bufferSize);
    uint64_t total = 0;
    uint32_t crc = uint32_t(crc32(0, nullptr, 0));
    for (;;) {
        const size_t got = source.Read(buffer, bufferSize);
        if (got == 0)
            break;
        total += got;
        if (total > 0xFFFFFFFFu)
            CZipException::ThrowErrno(EFBIG, source.GetFilePath());
        crc = uint32_t(crc32(crc, reinterpret_cast<const Bytef*>(buffer.GetBuffer()), uInt(got)));
        m_pStorage->Write(buffer, got);
    }
    header.m_uCrc32 = crc;
    header.m_uComprSize = header.m_uUncomprSize = uint32_t(total);
}

void CZipArchive::DeflateFrom(CZipFileHeader& header, CZipAbstractFile& source, size_t bufferSize, int level)
{
    z_stream stream{};
    int result = deflateInit2(&stream, level < 0 || level > 9 ? Z_DEFAULT_COMPRESSION : level, Z_DEFLATED, -MAX_WBITS,
                              8, Z_DEFAULT_STRATEGY);
    if (result != Z_OK)
        CZipException::ThrowZlib(result, m_archiveName);
    struct StreamGuard {
        z_stream* stream;
        ~StreamGuard() { deflateEnd(stream); }
    } guard{&stream};

    CZipAutoBuffer input(bufferSize);
    CZipAutoBuffer output(bufferSize);
    uint64_t total = 0;
    uint64_t written = 0;
    uint32_t crc = uint32_t(crc32(0, nullptr, 0));
    int flush = Z_NO_FLUSH;
    while (flush != Z_FINISH) {
        const size_t got = source.Read(input, bufferSize);
        flush = got == 0 ? Z_FINISH : Z_NO_FLUSH;
        total += got;
        if (total > 0xFFFFFFFFu)
            CZipException::ThrowErrno(EFBIG, source.GetFilePath());
        crc = uint32_t(crc32(crc, reinterpret_cast<const Bytef*>(input.GetBuffer()), uInt(got)));
        stream.next_in = reinterpret_cast<Bytef*>(input.GetBuffer());
        stream.avail_in = uInt(got);
        do {
            stream.next_out = reinterpret_cast<Bytef*>(output.GetBuffer());
            stream.avail_out = uInt(bufferSize);
            result = deflate(&stream, flush);
            if (result == Z_STREAM_ERROR)
                CZipException::ThrowZlib(result, m_archiveName);
            const size_t produced = bufferSize - stream.avail_out;
            written += produced;
            if (written > 0xFFFFFFFFu)
                CZipException::ThrowErrno(EFBIG, m_archiveName);
            m_pStorage->Write(output, produced);
        } while (stream.avail_out == 0);
    }
    header.m_uCrc32 = crc;
    header.m_uUncomprSize = uint32_t(total);
    header.m_uComprSize = uint32_t(written);
}

// ---- reading ----

bool CZipArchive::OpenFile(int index)
{
    if (!CheckOpen(__FILE__, __LINE__))
        return false;
    if (m_openIndex >= 0) {
        ZipPlatform::Trace("%s(%i) : A file already opened.\n", __FILE__, __LINE__);
        return false;
    }
    if (index < 0 || index >= GetCount())
        return false;
    const CZipFileHeader& header = m_centralDir.m_headers[size_t(index)];
    if (header.IsEncrypted())
        ThrowError(CZipException::badPassword);
    if (header.m_uMethod != CZipFileHeader::methodStored && header.m_uMethod != CZipFileHeader::methodDeflated)
        ThrowError(CZipException::badZipFile);
    m_inputPosition =
        header.LocateData(*m_pStorage, m_centralDir.m_bytesBeforeZip, m_centralDir.m_centralStart, m_archiveName);
    m_inputRemaining = header.m_uComprSize;
    m_produced = 0;
    m_crc = uint32_t(crc32(0, nullptr, 0));
    m_finished = false;
    m_streamDone = false;
    m_inflating = header.m_uMethod == CZipFileHeader::methodDeflated;
    if (m_inflating) {
        m_stream = z_stream{};
        const int result = inflateInit2(&m_stream, -MAX_WBITS);
        if (result != Z_OK)
            CZipException::ThrowZlib(result, m_archiveName);
        if (!m_input) {
            m_inputSize = kDefaultBufferSize;
            m_input.reset(new char[m_inputSize]);
        }
    }
    m_openIndex = index;
    return true;
}

void CZipArchive::VerifyEnd()
{
    const CZipFileHeader& header = m_centralDir.m_headers[size_t(m_openIndex)];
    m_finished = true;
    if (m_produced != header.m_uUncomprSize || m_crc != header.m_uCrc32)
        ThrowError(CZipException::badCrc);
}

size_t CZipArchive::ReadFile(void* buffer, size_t size)
{
    if (IsClosed() || m_openIndex < 0) {
        ZipPlatform::Trace("%s(%i) : No opened file.\n", __FILE__, __LINE__);
        return 0;
    }
    if (m_finished || size == 0)
        return 0;
    const CZipFileHeader& header = m_centralDir.m_headers[size_t(m_openIndex)];
    if (size > 0x40000000u)
        size = 0x40000000u;
    size_t produced = 0;
    if (!m_inflating) {
        const size_t wanted = size_t(std::min<uint64_t>(size, m_inputRemaining));
        if (wanted > 0) {
            m_pStorage->Seek(int64_t(m_inputPosition));
            if (m_pStorage->Read(buffer, wanted) != wanted)
                ThrowError(CZipException::badZipFile);
        }
        produced = wanted;
        m_inputPosition += wanted;
        m_inputRemaining -= wanted;
    } else if (!m_streamDone) {
        m_stream.next_out = static_cast<Bytef*>(buffer);
        m_stream.avail_out = uInt(size);
        while (m_stream.avail_out > 0) {
            if (m_stream.avail_in == 0 && m_inputRemaining > 0) {
                const size_t wanted = size_t(std::min<uint64_t>(m_inputSize, m_inputRemaining));
                m_pStorage->Seek(int64_t(m_inputPosition));
                if (m_pStorage->Read(m_input.get(), wanted) != wanted)
                    ThrowError(CZipException::badZipFile);
                m_inputPosition += wanted;
                m_inputRemaining -= wanted;
                m_stream.next_in = reinterpret_cast<Bytef*>(m_input.get());
                m_stream.avail_in = uInt(wanted);
            }
            const int result = inflate(&m_stream, Z_NO_FLUSH);
            if (result == Z_STREAM_END) {
                m_streamDone = true;
                break;
            }
            if (result != Z_OK && result != Z_BUF_ERROR)
                CZipException::ThrowZlib(result, m_archiveName);
            if (m_stream.avail_in == 0 && m_inputRemaining == 0) {
                // The compressed bytes ran out before the stream ended: the sizes will not match.
                m_streamDone = true;
                break;
            }
            if (result == Z_BUF_ERROR && m_stream.avail_out > 0)
                CZipException::ThrowZlib(result, m_archiveName);
        }
        produced = size - m_stream.avail_out;
    }
    m_crc = uint32_t(crc32(m_crc, static_cast<const Bytef*>(buffer), uInt(produced)));
    m_produced += produced;
    // More than the entry claims to hold is damage; stopping here also bounds the work.
    if (m_produced > header.m_uUncomprSize)
        ThrowError(CZipException::badCrc);
    if (produced == 0)
        VerifyEnd();
    return produced;
}

int CZipArchive::CloseFile(bool afterException)
{
    if (m_openIndex < 0) {
        if (!afterException)
            ZipPlatform::Trace("%s(%i) : No opened file.\n", __FILE__, __LINE__);
        return -1;
    }
    if (m_inflating)
        inflateEnd(&m_stream);
    m_inflating = false;
    m_openIndex = -1;
    return 1;
}

bool CZipArchive::ExtractFile(int index, CZipAbstractFile& target, size_t bufferSize)
{
    if (!OpenFile(index))
        return false;
    try {
        CZipAutoBuffer buffer(ClampBuffer(bufferSize));
        while (size_t got = ReadFile(buffer, buffer.GetSize()))
            target.Write(buffer, got);
    }
    catch (...) {
        CloseFile(true);
        throw;
    }
    CloseFile();
    return true;
}

bool CZipArchive::TestFile(int index, size_t bufferSize)
{
    if (!CheckOpen(__FILE__, __LINE__) || index < 0 || index >= GetCount())
        return false;
    const CZipFileHeader& header = m_centralDir.m_headers[size_t(index)];
    if (header.IsDirectory()) {
        if (header.m_uUncomprSize > 0 || header.m_uComprSize > 0)
            ThrowError(CZipException::dirWithSize);
        return true;
    }
    if (!OpenFile(index))
        return false;
    try {
        CZipAutoBuffer buffer(ClampBuffer(bufferSize));
        while (ReadFile(buffer, buffer.GetSize()) > 0) {
        }
    }
    catch (...) {
        CloseFile(true);
        throw;
    }
    CloseFile();
    return true;
}

std::string CZipArchive::TargetPath(const CZipFileHeader& header, const std::string& directory, bool fullPath,
                                    const char* newName) const
{
    std::vector<std::string> components;
    const std::string name = newName ? std::string(newName) : header.GetFileName();
    if (header.IsSymbolicLink() || !CZipPathComponent::SplitSafely(name, components))
        ThrowError(CZipException::platfNotSupp);
    // Only a folder entry may name the destination itself ("./"); a file needs a name of its own.
    if (components.empty() && !header.IsDirectory())
        ThrowError(CZipException::platfNotSupp);
    std::string target = directory;
    if (target.size() > 1)
        CZipPathComponent::RemoveTrailingSeparators(target);
    if (components.empty())
        return target.empty() ? std::string(".") : target;
    if (!fullPath)
        components.erase(components.begin(), components.end() - 1);
    for (const std::string& part : components) {
        if (!target.empty() && target.back() != '/')
            target += '/';
        target += part;
    }
    return target;
}

bool CZipArchive::ExtractFile(int index, const std::string& directory, bool fullPath, const char* newName,
                              const CZipActionCallback& callback, size_t bufferSize)
{
    if (!CheckOpen(__FILE__, __LINE__))
        return false;
    if (m_openIndex >= 0) {
        ZipPlatform::Trace("%s(%i) : A file already opened.\n", __FILE__, __LINE__);
        return false;
    }
    if (index < 0 || index >= GetCount())
        return false;
    const CZipFileHeader& header = m_centralDir.m_headers[size_t(index)];
    const std::string target = TargetPath(header, directory, fullPath, newName);

    if (header.IsDirectory()) {
        ZipPlatform::ForceDirectory(target);
        ZipPlatform::SetFileModTime(target, header.GetTime());
        return true;
    }
    // The entries of one folder mostly come one after another: each folder is made once.
    const std::string folder = CZipPathComponent(target).GetFilePath();
    if (folder != m_madeFolder) {
        ZipPlatform::ForceDirectory(folder);
        m_madeFolder = folder;
    }
    if (!OpenFile(index))
        return false;
    CZipFile output;
    try {
        output.Open(target, CZipFile::modeCreate);
        CZipAutoBuffer buffer(ClampBuffer(bufferSize));
        const uint64_t total = header.m_uUncomprSize;
        uint64_t done = 0;
        while (size_t got = ReadFile(buffer, buffer.GetSize())) {
            output.Write(buffer, got);
            done += got;
            if (callback && !callback(done, total))
                ThrowError(CZipException::abortedAction);
        }
    }
    catch (...) {
        CloseFile(true);
        if (!output.IsClosed()) {
            output.Close();
            ::unlink(target.c_str());
        }
        throw;
    }
    CloseFile();
    output.Close();
    if (m_restoreTimes)
        ZipPlatform::SetFileModTime(target, header.GetTime());
    return true;
}
