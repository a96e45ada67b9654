#include "ziparchive/CZipException.h"

#include <zlib.h>

#include <cstring>

namespace {

const char* ErrnoText(int code)
{
    switch (code) {
    case 1:
        return "Not super-user";
    case 2:
        return "No such file or directory";
    case 4:
        return "Interrupted system call";
    case 5:
        return "I/O error";
    case 6:
        return "No such device or address";
    case 9:
        return "Bad file number";
    case 12:
        return "Not enough space";
    case 13:
        return "Permission denied";
    case 14:
        return "Bad address";
    case 17:
        return "File exists";
    case 18:
        return "Cross-device link";
    case 19:
        return "No such device";
    case 20:
        return "Not a directory";
    case 21:
        return "Is a directory";
    case 22:
        return "Invalid argument";
    case 23:
        return "File table overflow";
    case 24:
        return "Too many open files";
    case 27:
        return "File too large";
    case 28:
        return "No space left on device";
    case 29:
        return "Illegal seek";
    case 30:
        return "Read-only file system";
    default:
        return nullptr;
    }
}

const char* CodeText(int code)
{
    switch (code) {
    case CZipException::badZipFile:
        return "Damaged or not a zip file";
    case CZipException::badCrc:
        return "Crc mismatched";
    case CZipException::noCallback:
        return "No disk-spanning callback object set";
    case CZipException::aborted:
        return "Disk change aborted";
    case CZipException::abortedAction:
        return "Action aborted";
    case CZipException::abortedSafely:
        return "Action aborted safely";
    case CZipException::nonRemovable:
        return "The device selected for the disk spanning archive is non removable";
    case CZipException::tooManyVolumes:
        return "Limit of the maximum volumes reached";
    case CZipException::tooLongFileName:
        return "The filename of the file being added to the archive is too long";
    case CZipException::badPassword:
        return "Incorrect password set for the file being decrypted";
    case CZipException::dirWithSize:
        return "During testing found the directory with the size greater than 0";
    case CZipException::internal:
        return "Internal error";
    case CZipException::notRemoved:
        return "Error while removing a file";
    case CZipException::notRenamed:
        return "Error while renaming a file";
    case CZipException::platfNotSupp:
        return "Cannot create the file for the specified platform";
    case CZipException::cdirNotFound:
        return "The central directory was not found in the archive (or you were trying to open not "
               "the last disk of a multi-disk archive).";
    case CZipException::streamEnd:
        return "Zlib Library error (end of stream)";
    case CZipException::streamError:
        return "Zlib library error (stream error)";
    case CZipException::dataError:
        return "Zlib library error (data error)";
    case CZipException::memError:
        return "Not enough memory";
    case CZipException::bufError:
        return "Zlib library error (buffer error)";
    case CZipException::versionError:
        return "Zlib library error (version error)";
    default:
        return nullptr;
    }
}

}  // namespace

CZipException::CZipException(int cause, const std::string& fileName, int systemError)
    : m_szFileName(fileName),
      m_iCause(cause),
      m_iSystemError(systemError)
{}

std::string CZipException::GetInternalErrorDescription(int cause, int systemError)
{
    if (cause == errNo)
        return std::strerror(systemError);
    if (const char* text = cause <= 30 ? ErrnoText(cause) : CodeText(cause))
        return text;
    return "Unknown error";
}

std::string CZipException::GetErrorDescription() const
{
    std::string text = GetInternalErrorDescription(m_iCause, m_iSystemError);
    if ((m_iCause == notRemoved || m_iCause == notRenamed) && !m_szFileName.empty())
        text += " (" + m_szFileName + ")";
    return text;
}

int CZipException::ZlibErrToZip(int zlibError)
{
    switch (zlibError) {
    case Z_STREAM_END:
        return streamEnd;
    case Z_NEED_DICT:
        return needDict;
    case Z_ERRNO:
        return errNo;
    case Z_STREAM_ERROR:
        return streamError;
    case Z_DATA_ERROR:
        return dataError;
    case Z_MEM_ERROR:
        return memError;
    case Z_BUF_ERROR:
        return bufError;
    case Z_VERSION_ERROR:
        return versionError;
    default:
        return generic;
    }
}

void CZipException::Throw(int cause, const std::string& fileName)
{
    throw CZipException(cause, fileName);
}

void CZipException::ThrowErrno(int systemError, const std::string& fileName)
{
    if (systemError >= 1 && systemError <= 30)
        throw CZipException(systemError, fileName, systemError);
    throw CZipException(errNo, fileName, systemError);
}

void CZipException::ThrowZlib(int zlibError, const std::string& fileName)
{
    const int cause = ZlibErrToZip(zlibError);
    throw CZipException(cause, fileName, cause == errNo ? errno : 0);
}
