// The one place where the console progress looks into a category record.
//
// Hook: the category record of the installation engine doesn't exist yet. When it lands, return
// its display name in the default language here.
#include "CLIProgress.h"

CAtlString CLIProgress::CategoryName(const CGalleryCategory&)
{
    return CAtlString();
}
