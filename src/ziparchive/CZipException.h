#pragma once

#include <string>

// The one failure type of the archive layer. `m_iCause` is either an errno value (1 to 30), or one
// of the codes below; `m_szFileName` names the archive (UTF-8), or the file an operation was on.
class CZipException {
public:
    enum {
        noError = 0,
        generic = 100,
        badZipFile = 101,
        badCrc = 102,
        noCallback = 103,
        aborted = 104,
        abortedAction = 105,
        abortedSafely = 106,
        nonRemovable = 107,
        tooManyVolumes = 108,
        tooLongFileName = 109,
        badPassword = 110,
        dirWithSize = 111,
        internal = 112,
        notRemoved = 113,
        notRenamed = 114,
        platfNotSupp = 115,
        cdirNotFound = 116,
        streamEnd = 500,
        needDict = 501,
        errNo = 502,
        streamError = 503,
        dataError = 504,
        memError = 505,
        bufError = 506,
        versionError = 507,
    };

    explicit CZipException(int cause = generic, const std::string& fileName = std::string(), int systemError = 0);

    // The text of the cause; for a failed removal or rename, "<text> (<file>)".
    std::string GetErrorDescription() const;
    static std::string GetInternalErrorDescription(int cause, int systemError = 0);

    // zlib result to cause: Z_STREAM_END 500 ... Z_VERSION_ERROR 507, anything else 100.
    static int ZlibErrToZip(int zlibError);

    [[noreturn]] static void Throw(int cause, const std::string& fileName = std::string());
    // For a failed system call: the errno value itself when it is one of 1 to 30, else 502.
    [[noreturn]] static void ThrowErrno(int systemError, const std::string& fileName = std::string());
    [[noreturn]] static void ThrowZlib(int zlibError, const std::string& fileName = std::string());

    std::string m_szFileName;
    int m_iCause;
    int m_iSystemError;  // errno behind a 502
};
