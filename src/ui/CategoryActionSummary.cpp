#include "ui/CategoryActionSummary.h"

#include "installation/CGalleryCategory.h"

#include <QCoreApplication>

QString CategoryActionSummary::Heading() const
{
    return QCoreApplication::translate("MainWindow", heading);
}

const std::array<CategoryActionSummary, 3>& CategoryActionSummaries()
{
    static const std::array<CategoryActionSummary, 3> summaries{{
        {eGalleryCategoryActionInstall, QT_TRANSLATE_NOOP("MainWindow", "Categories to Add"), ":/images/add.png"},
        {eGalleryCategoryActionUpdate, QT_TRANSLATE_NOOP("MainWindow", "Categories to Update"), ":/images/update.png"},
        {eGalleryCategoryActionUninstall, QT_TRANSLATE_NOOP("MainWindow", "Categories to Remove"),
         ":/images/remove.png"},
    }};
    return summaries;
}

const CategoryActionSummary* FindCategoryActionSummary(int action)
{
    for (const CategoryActionSummary& summary : CategoryActionSummaries())
        if (summary.action == action)
            return &summary;
    return nullptr;
}
