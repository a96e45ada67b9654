#include "installation/InstalledXmlWriter.h"

#include "foundation/SafeReplace.h"

#include "configuration/CConfiguration.h"
#include "installation/CGalleryInstallation.h"

#include <tinyxml2.h>

#include <cstdio>

namespace {

// The version to record for a category, or false when it doesn't count as present.
bool RecordedVersion(const CGalleryCategory& category, CAtlString& version)
{
    switch (category.GetAction()) {
    case eGalleryCategoryActionInstall:
        version = category.GetVersion();
        // Exactly 0: a code of partial success (1) or of a replaced record (4) is not a clean install.
        return category.GetResult() == S_OK;
    case eGalleryCategoryActionNone:
        version = category.GetInstalledVersion();
        return category.IsInstalled();
    case eGalleryCategoryActionUpdate:
        version = category.GetVersion();
        return true;
    default:
        return false;
    }
}

}  // namespace

void InstalledXmlWriter::Write(CGalleryInstallation* installation)
{
    if (!installation || !m_configuration)
        return;
    try {
        tinyxml2::XMLDocument document;
        tinyxml2::XMLElement* root = document.NewElement("categories");
        document.InsertEndChild(root);
        bool anyRecorded = false;
        for (int i = 0; i < installation->CategoryCount(); ++i) {
            const CGalleryCategory* category = installation->Category(i);
            CAtlString version;
            if (!RecordedVersion(*category, version))
                continue;
            anyRecorded = true;
            tinyxml2::XMLElement* element = document.NewElement("category");
            element->SetAttribute("id", category->GetId().ToUtf8().GetString());
            element->SetAttribute("version", version.ToUtf8().GetString());
            root->InsertEndChild(element);
        }
        CZoltaDirectoryPath uninstall = m_configuration->GetInstallDirectory();
        if (uninstall.IsEmpty())
            return;
        uninstall.Append(L"Uninstall");
        const CZoltaFilePath path = uninstall.GetFile(L"updateinfo.xml");
        if (anyRecorded) {
            ReplaceFileWith(path, [&document](FILE* file) { return document.SaveFile(file) == tinyxml2::XML_SUCCESS; });
        } else if (path.Exists())
            path.Remove();
    }
    catch (...) {
    }
}
