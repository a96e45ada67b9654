#pragma once

#include "ziparchive/CZipCentralDir.h"
#include "ziparchive/CZipFileHeader.h"

#include <zlib.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

class CZipAbstractFile;
class CZipFile;

// Called while data moves: bytes done and bytes in all; false aborts with 105.
using CZipActionCallback = std::function<bool(uint64_t done, uint64_t total)>;

// The request to add one file: from a path or an open stream, under a name given here or taken
// from the path.
struct CZipAddNewFileInfo {
    enum { zipsmCheckForEff = 1, zipsmMemoryFlag = 2, zipsmSmartPass = 4, zipsmSmartest = 7 };

    explicit CZipAddNewFileInfo(const std::string& filePath, bool fullPath = true)
        : m_szFilePath(filePath),
          m_bFullPath(fullPath)
    {}
    CZipAddNewFileInfo(const std::string& filePath, const std::string& nameInZip)
        : m_szFilePath(filePath),
          m_szFileNameInZip(nameInZip)
    {}
    CZipAddNewFileInfo(CZipAbstractFile* file, const std::string& nameInZip)
        : m_szFileNameInZip(nameInZip),
          m_pFile(file)
    {}

    std::string m_szFilePath;       // UTF-8
    std::string m_szFileNameInZip;  // UTF-8; empty takes the name from the path
    CZipAbstractFile* m_pFile = nullptr;
    bool m_bFullPath = true;  // keep the path (below the root path) rather than the last name
    int m_iComprLevel = -1;   // zlib's levels; 0 stores
    int m_iSmartLevel = zipsmSmartest;
    int m_iReplaceIndex = -1;  // only adding is supported
    unsigned long m_nBufSize = 65536;
};

// One zip archive: opened, read or added to, and closed by the same thread. Failures of the data
// throw CZipException; calls made in the wrong order are logged and return false.
class CZipArchive {
public:
    enum OpenMode { zipOpen = 0, zipOpenReadOnly = 1, zipCreate = 2 };
    enum { kDefaultBufferSize = 65536, kMaxEntries = 0xFFFF };
    // The zlib release the layer was first made with; any release of the same major line is fine.
    static constexpr const char* kZlibVersionMadeWith = "1.2.1.2";

    CZipArchive();
    ~CZipArchive();
    CZipArchive(const CZipArchive&) = delete;
    CZipArchive& operator=(const CZipArchive&) = delete;

    // `path` is UTF-8. Spanning is not built: a volume size other than 0 is refused.
    bool Open(const std::string& path, int mode = zipOpen, int volumeSize = 0);
    // Works on a stream that stays the caller's.
    bool Open(CZipAbstractFile& file, int mode = zipOpen);
    // Writes the central directory of a changed archive and closes. After an exception, whatever
    // can still be written is written and further failures are swallowed.
    void Close(bool afterException = false, bool updateTimeStamp = false);
    bool IsClosed() const { return m_pStorage == nullptr; }

    int GetCount() const;
    bool GetFileInfo(CZipFileHeader& header, int index) const;
    int FindFile(const std::string& name, bool caseSensitive = false) const;
    // The system code of the first entry when it is a known one, else this platform's.
    int GetSystemCompatibility() const { return m_iArchiveSystCompatib; }
    std::string GetArchivePath() const { return m_archiveName; }

    // Paths added with a full path are stored relative to this folder.
    void SetRootPath(const std::string& root);
    const std::string& GetRootPath() const { return m_rootPath; }

    bool AddNewFile(CZipAddNewFileInfo& info);

    // Extracts into `directory`: with `fullPath` the entry's folders are kept, else only its last
    // name is used; `newName` replaces the entry's name. Names that would leave `directory`
    // (absolute, "..") and links are refused with 115.
    bool ExtractFile(int index, const std::string& directory, bool fullPath = true, const char* newName = nullptr,
                     const CZipActionCallback& callback = {}, size_t bufferSize = kDefaultBufferSize);
    // Whether the files ExtractFile writes get the entry's time (the default) or keep the time of
    // their writing.
    void SetRestoreTimes(bool restore) { m_restoreTimes = restore; }
    // Extracts the data of the entry into a stream.
    bool ExtractFile(int index, CZipAbstractFile& target, size_t bufferSize = kDefaultBufferSize);
    // Reads the entry through, checking its CRC; a folder with data is 111.
    bool TestFile(int index, size_t bufferSize = kDefaultBufferSize);

    // Entry reading in the small: one entry open at a time.
    bool OpenFile(int index);
    // Returns the bytes given, 0 at the end; at the end the size and CRC are verified (102).
    size_t ReadFile(void* buffer, size_t size);
    int CloseFile(bool afterException = false);

private:
    bool CheckOpen(const char* file, int line) const;
    void OpenStorage(CZipAbstractFile& file, int mode);
    void ResetState();
    std::string MakeEntryName(const CZipAddNewFileInfo& info, bool isDirectory) const;
    void WriteEntryData(CZipFileHeader& header, CZipAbstractFile& source, const CZipAddNewFileInfo& info);
    void DeflateFrom(CZipFileHeader& header, CZipAbstractFile& source, size_t bufferSize, int level);
    void StoreFrom(CZipFileHeader& header, CZipAbstractFile& source, size_t bufferSize);
    std::string TargetPath(const CZipFileHeader& header, const std::string& directory, bool fullPath,
                           const char* newName) const;
    void VerifyEnd();
    [[noreturn]] void ThrowError(int cause) const;

    std::unique_ptr<CZipFile> m_ownedFile;
    CZipAbstractFile* m_pStorage = nullptr;
    std::string m_archiveName;
    int m_iMode = zipOpenReadOnly;
    int m_iArchiveSystCompatib = 3;
    CZipCentralDir m_centralDir;
    uint64_t m_writePosition = 0;  // where the next entry (or the central directory) goes
    bool m_bDirty = false;
    std::string m_rootPath;
    // The folder that the last extracted file went into, made already.
    std::string m_madeFolder;
    bool m_restoreTimes = true;

    // The entry open for reading.
    int m_openIndex = -1;
    bool m_inflating = false;
    bool m_finished = false;
    bool m_streamDone = false;
    z_stream m_stream{};
    uint64_t m_inputPosition = 0;
    uint64_t m_inputRemaining = 0;
    uint64_t m_produced = 0;
    uint32_t m_crc = 0;
    std::unique_ptr<char[]> m_input;
    size_t m_inputSize = 0;
};
