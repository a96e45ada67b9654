#include "app/FileAssociations.h"

namespace FileAssociations {

bool Register(const CAtlString&, const CAtlString&)
{
    return true;
}

bool Unregister()
{
    return true;
}

}  // namespace FileAssociations
