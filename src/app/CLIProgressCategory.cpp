// The one place where the console progress looks into a category record.
#include "CLIProgress.h"

#include "CGalleryCategory.h"

CAtlString CLIProgress::CategoryName(const CGalleryCategory& category)
{
    // The title in the current language, or the first one when none matches.
    return category.GetTitle();
}
