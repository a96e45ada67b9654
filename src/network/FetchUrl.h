#pragma once

#include "network/IProxyObserver.h"

#include "foundation/CZoltaFilePath.h"
#include "foundation/ZoltaResult.h"

#include "libZoltaAtl/CAtlString.h"

#include <QByteArray>

#include <functional>

// Where the bytes of a running fetch are reported: the installation's progress relay takes them
// to move a file's bar.
class IByteProgressObserver {
public:
    virtual ~IByteProgressObserver() = default;
    virtual void ReadProgress(unsigned int done, unsigned int total) = 0;
};

// What a fetch running beside others needs: a way to stop it at once (true stops it, its file
// removed, with 0x80004004), and a place for the lines it would print, to be printed when its
// turn comes (PrintConsoleLines).
struct FetchControl {
    std::function<bool()> aborted;
    QByteArray* consoleLines = nullptr;
};

// The one entry to the network for the engine: fetches `url` into `localFile` through the proxy
// the observer knows of (none when the observer is null or its host is empty). The observer
// answers 407 replies; bytes go to `progress` when given, else to the observer. On failure,
// `reason` (when given) says why in plain English.
[[nodiscard]] HRESULT FetchUrl(const CAtlString& url, const CZoltaFilePath& localFile, IProxyObserver* proxyObserver,
                               IByteProgressObserver* progress = nullptr, CAtlString* reason = nullptr,
                               const FetchControl* control = nullptr);

// Prints what a fetch kept back in FetchControl::consoleLines, as it would have printed it.
void PrintConsoleLines(const QByteArray& lines);

// Fetches `url` into a new temporary file named from "SCVTemp" and the extension of the URL's
// path. Gives that file, or an empty path on failure (a partial file is then removed).
CZoltaFilePath FetchToTempFile(const CAtlString& url, IProxyObserver* proxyObserver);
