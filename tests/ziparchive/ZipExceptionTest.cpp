// Codes and texts of CZipException, and the name conversion they meet on the way.
#include "ziparchive/CZipException.h"
#include "ziparchive/ZipPlatform.h"

#include <gtest/gtest.h>

#include <zlib.h>

#include <cerrno>
#include <cstring>

TEST(ZipException, TextsOfArchiveErrnoAndZlibCodes)
{
    const struct {
        int code;
        const char* file;
        const char* text;
    } cases[] = {
        {101, "", "Damaged or not a zip file"},
        {101, "x.zip", "Damaged or not a zip file"},  // only remove and rename name their file
        {102, "", "Crc mismatched"},
        {111, "", "During testing found the directory with the size greater than 0"},
        {113, "old.zip", "Error while removing a file (old.zip)"},
        {114, "new.zip", "Error while renaming a file (new.zip)"},
        {116, "",
         "The central directory was not found in the archive (or you were trying to open not the last disk of a "
         "multi-disk archive)."},
        {500, "", "Zlib Library error (end of stream)"},
        {505, "", "Not enough memory"},
        {507, "", "Zlib library error (version error)"},
        {2, "", "No such file or directory"},
        {12, "", "Not enough space"},
        {30, "", "Read-only file system"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(CZipException(c.code, c.file).GetErrorDescription(), c.text) << c.code;
    for (int unknown : {0, 3, 31, 100, 117, 501, 508, -1})
        EXPECT_EQ(CZipException(unknown).GetErrorDescription(), "Unknown error") << unknown;

    const int zlib[] = {Z_STREAM_END, Z_NEED_DICT, Z_ERRNO,         Z_STREAM_ERROR, Z_DATA_ERROR,
                        Z_MEM_ERROR,  Z_BUF_ERROR, Z_VERSION_ERROR, Z_OK,           -7};
    const int zip[] = {500, 501, 502, 503, 504, 505, 506, 507, 100, 100};
    for (size_t i = 0; i < std::size(zlib); ++i)
        EXPECT_EQ(CZipException::ZlibErrToZip(zlib[i]), zip[i]) << zlib[i];
}

TEST(ZipException, SystemFailureIsItsErrnoUpTo30Else502WithTheSystemText)
{
    for (const int error : {ENOENT, ELOOP}) {
        try {
            CZipException::ThrowErrno(error, "a.zip");
            FAIL();
        }
        catch (const CZipException& thrown) {
            EXPECT_EQ(thrown.m_iCause, error == ENOENT ? 2 : static_cast<int>(CZipException::errNo));
            EXPECT_EQ(thrown.m_szFileName, "a.zip");
            if (error == ELOOP) {
                EXPECT_EQ(thrown.GetErrorDescription(), std::strerror(ELOOP));
            }
        }
    }
}

TEST(ZipPlatformNames, WideAndUtf8ConvertBothWays)
{
    std::string single = "junk";
    EXPECT_EQ(ZipPlatform::WideToSingle(L"", single, false), 0);
    EXPECT_TRUE(single.empty());
    EXPECT_EQ(ZipPlatform::WideToSingle(nullptr, single, false), 0);

    const wchar_t* name = L"Gr\u00FC\u00DFe/\u65E5\U0001F600.txt";
    const int length = ZipPlatform::WideToSingle(name, single, false);
    EXPECT_EQ(length, static_cast<int>(single.size()));
    EXPECT_EQ(single, "Gr\xC3\xBC\xC3\x9F"
                      "e/\xE6\x97\xA5\xF0\x9F\x98\x80.txt");
    std::wstring wide;
    ZipPlatform::SingleToWide(single, wide, false);
    EXPECT_EQ(wide, name);

    // Bytes that are not UTF-8 still give a name, never a cut one.
    ZipPlatform::SingleToWide(std::string("a\xFF\xC3"), wide, false);
    EXPECT_EQ(wide, std::wstring(L"a\uFFFD\uFFFD"));
}
