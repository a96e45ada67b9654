// Codes and texts of CZipException, and the name conversion they meet on the way.
#include "ziparchive/CZipException.h"
#include "ziparchive/ZipPlatform.h"

#include <gtest/gtest.h>

#include <zlib.h>

#include <cerrno>
#include <cstring>

TEST(ZipException, TextsOfArchiveAndZlibCodes)
{
    EXPECT_EQ(CZipException(101).GetErrorDescription(), "Damaged or not a zip file");
    EXPECT_EQ(CZipException(102).GetErrorDescription(), "Crc mismatched");
    EXPECT_EQ(CZipException(111).GetErrorDescription(),
              "During testing found the directory with the size greater than 0");
    EXPECT_EQ(CZipException(116).GetErrorDescription(),
              "The central directory was not found in the archive (or you were trying to open not "
              "the last disk of a multi-disk archive).");
    EXPECT_EQ(CZipException(500).GetErrorDescription(), "Zlib Library error (end of stream)");
    EXPECT_EQ(CZipException(505).GetErrorDescription(), "Not enough memory");
    EXPECT_EQ(CZipException(507).GetErrorDescription(), "Zlib library error (version error)");
    for (int unknown : {0, 3, 31, 100, 117, 501, 508, -1})
        EXPECT_EQ(CZipException(unknown).GetErrorDescription(), "Unknown error") << unknown;
}

TEST(ZipException, ErrnoCodesAndTheSystemText)
{
    EXPECT_EQ(CZipException(2).GetErrorDescription(), "No such file or directory");
    EXPECT_EQ(CZipException(12).GetErrorDescription(), "Not enough space");
    EXPECT_EQ(CZipException(30).GetErrorDescription(), "Read-only file system");

    // A system failure is its errno when that is one of 1 to 30, else 502 with the system's text.
    try {
        CZipException::ThrowErrno(ENOENT, "a.zip");
        FAIL();
    }
    catch (const CZipException& error) {
        EXPECT_EQ(error.m_iCause, 2);
        EXPECT_EQ(error.m_szFileName, "a.zip");
    }
    try {
        CZipException::ThrowErrno(ELOOP, "b.zip");
        FAIL();
    }
    catch (const CZipException& error) {
        EXPECT_EQ(error.m_iCause, CZipException::errNo);
        EXPECT_EQ(error.GetErrorDescription(), std::strerror(ELOOP));
    }
}

TEST(ZipException, FileNameJoinsOnlyRemoveAndRenameTexts)
{
    EXPECT_EQ(CZipException(113, "old.zip").GetErrorDescription(), "Error while removing a file (old.zip)");
    EXPECT_EQ(CZipException(114, "new.zip").GetErrorDescription(), "Error while renaming a file (new.zip)");
    EXPECT_EQ(CZipException(101, "x.zip").GetErrorDescription(), "Damaged or not a zip file");
}

TEST(ZipException, ZlibResultsMapToCodes)
{
    const int zlib[] = {Z_STREAM_END, Z_NEED_DICT, Z_ERRNO,         Z_STREAM_ERROR, Z_DATA_ERROR,
                        Z_MEM_ERROR,  Z_BUF_ERROR, Z_VERSION_ERROR, Z_OK,           -7};
    const int zip[] = {500, 501, 502, 503, 504, 505, 506, 507, 100, 100};
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(CZipException::ZlibErrToZip(zlib[i]), zip[i]) << zlib[i];
}

TEST(ZipPlatformNames, WideAndUtf8ConvertBothWays)
{
    std::string single = "junk";
    EXPECT_EQ(ZipPlatform::WideToSingle(L"", single, false), 0);
    EXPECT_TRUE(single.empty());
    EXPECT_EQ(ZipPlatform::WideToSingle(nullptr, single, false), 0);

    const wchar_t* name = L"Gr\u00FC\u00DFe/\u65E5\U0001F600.txt";
    const int length = ZipPlatform::WideToSingle(name, single, false);
    EXPECT_EQ(length, int(single.size()));
    EXPECT_EQ(single, "Gr\xC3\xBC\xC3\x9F"
                      "e/\xE6\x97\xA5\xF0\x9F\x98\x80.txt");
    std::wstring wide;
    ZipPlatform::SingleToWide(single, wide, false);
    EXPECT_EQ(wide, name);

    // Bytes that are not UTF-8 still give a name, never a cut one.
    ZipPlatform::SingleToWide(std::string("a\xFF\xC3"), wide, false);
    EXPECT_EQ(wide, std::wstring(L"a\uFFFD\uFFFD"));
}
