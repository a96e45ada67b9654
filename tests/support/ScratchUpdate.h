#pragma once

#include "network/CSelfUpdate.h"

#include <QCryptographicHash>

#include <memory>
#include <string>

namespace curatool::test {

// The update's local document read from a scratch file instead of the program's share folder.
class ScratchUpdate : public CSelfUpdate {
public:
    ScratchUpdate(const std::string& localFile, std::shared_ptr<IDownloader> downloader)
        : CSelfUpdate(CAtlString(L"CuratoolId.xml"), std::move(downloader)),
          m_path(localFile)
    {}
    CAtlString LocalFilePath() override { return CAtlString(QString::fromStdString(m_path)); }

private:
    std::string m_path;
};

inline std::string Sha256Hex(const std::string& bytes)
{
    return QCryptographicHash::hash(QByteArray::fromStdString(bytes), QCryptographicHash::Sha256).toHex().toStdString();
}

}  // namespace curatool::test
