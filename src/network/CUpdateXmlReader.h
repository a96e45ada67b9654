#pragma once

#include "configuration/CVersionString.h"

#include "libZoltaAtl/CAtlString.h"

// The two documents that decide a self-update: the local one says which version is installed and
// where the publisher keeps its document; the remote one says what is current and where the
// installer is. Both are UTF-8 XML with any root element, whose child row carries the values.
class CUpdateXmlReader {
public:
    CUpdateXmlReader();
    virtual ~CUpdateXmlReader();

    // The local document's Product row. True only when CurrentVersion, RemoteVersionFileURL and
    // RemoteVersionFile are all given; the attributes are kept in any case.
    virtual bool ParseLocal(const QByteArray& text);
    // The remote document's Product row, or its TestProduct row on a test machine (the marker file
    // existed when this object was made). Empty values are not refused.
    virtual bool ParseRemote(const QByteArray& text);
    virtual CAtlString LocalFilePath() = 0;
    // Fetches the remote document into a local file; its path, or empty on failure.
    virtual CAtlString FetchRemoteFile() = 0;

    bool IsLocalParsed() const { return m_localParsed; }
    bool IsRemoteParsed() const { return m_remoteParsed; }
    const CVersionString& GetCurrentVersion() const { return m_currentVersion; }
    const CAtlString& GetRemoteVersionFileURL() const { return m_remoteVersionFileURL; }
    const CAtlString& GetRemoteVersionFile() const { return m_remoteVersionFile; }
    bool GetNoUpdates() const { return m_noUpdates; }
    const CVersionString& GetUpdateVersion() const { return m_updateVersion; }
    const CAtlString& GetInstallFile() const { return m_installFile; }
    const CAtlString& GetInstallURL() const { return m_installURL; }
    const CAtlString& GetInstallSize() const { return m_installSize; }
    const CAtlString& GetWebPage() const { return m_webPage; }
    const CAtlString& GetArgument() const { return m_argument; }
    // The optional UpdateInstallSHA256 of the remote row, as written; empty when absent.
    const CAtlString& GetInstallSha256() const { return m_installSha256; }

    // Where the marker file of a test machine is looked for.
    static CAtlString TestMarkerPath();

protected:
    bool m_localParsed = false;
    bool m_remoteParsed = false;
    CVersionString m_currentVersion;
    CAtlString m_remoteVersionFileURL;
    CAtlString m_remoteVersionFile;
    bool m_noUpdates = false;
    CVersionString m_updateVersion;
    CAtlString m_installFile;
    CAtlString m_installURL;
    CAtlString m_installSize;
    CAtlString m_webPage;
    CAtlString m_argument;
    CAtlString m_installSha256;
    bool m_testMachine = false;
};
