#include "gallery/GalleryIdentifiers.h"

#include "libZoltaAtl/CAtlString.h"
#include "gallery/GalleryText.h"

#include <uuid/uuid.h>

CAtlString NewUuidText()
{
    uuid_t uuid;
    uuid_generate(uuid);
    char text[37] = {};
    uuid_unparse_upper(uuid, text);
    return CAtlString(text);  // ASCII only
}

CAtlString NewGalleryIdentifier(const wchar_t* type)
{
    CAtlString identifier;
    identifier.Format(L"%s/uniqueid?type=%s&id=%s", PLACEHOLDER_URI_BASE, IsBlankText(type) ? L"unknown" : type,
                      NewUuidText().GetString());
    return identifier;
}

CAtlString NewActivityIdentifier(const wchar_t* typePart, const wchar_t* idPart)
{
    const CAtlString type = IsBlankText(typePart) ? NewGalleryIdentifier(L"activity") : CAtlString(typePart);
    const CAtlString id = IsBlankText(idPart) ? NewUuidText() : CAtlString(idPart);
    CAtlString identifier;
    identifier.Format(L"%s/%s", type.GetString(), id.GetString());
    return identifier;
}

CAtlString NewRandomIdentifier()
{
    CAtlString identifier;
    identifier.Format(L"%s/randomid?id=%s", PLACEHOLDER_URI_BASE, NewUuidText().GetString());
    return identifier;
}

CAtlString MyContentManifestIdentifier()
{
    return CAtlString(PLACEHOLDER_URI_BASE) + L"/default?manifest=My%20Content";
}

CAtlString MyContentOrganizationIdentifier()
{
    return CAtlString(PLACEHOLDER_URI_BASE) + L"/default?organization=My%20Content";
}

CAtlString MyContentCategoryIdentifier()
{
    return CAtlString(PLACEHOLDER_URI_BASE) + L"/My%20Content";
}
