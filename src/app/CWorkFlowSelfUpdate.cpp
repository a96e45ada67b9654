// The update question of a window-based start, and the desktop's hand-over of a collection file.
#include "app/CApplicationFactory.h"
#include "app/CWorkFlow.h"

#include "app/CCmdLineContext.h"
#include "network/CSelfUpdate.h"
#include "installation/GalleryDownloader.h"
#include "ui/Output.h"
#include "foundation/QtEventProxy.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <QCoreApplication>
#include <QFileOpenEvent>
#include <QMessageBox>
#include <QProcess>

namespace {

// The local update document, in the "share" folder beside the program's folder.
const wchar_t kLocalUpdateDocument[] = L"CuratoolId.xml";

}  // namespace

bool CWorkFlow::CheckSelfUpdate(const CWorkFlowEnvironment& environment)
{
    ZOLTA_ASSERT(environment.downloader != nullptr);
    CSelfUpdate update{CAtlString(kLocalUpdateDocument), environment.downloader};
    return CheckSelfUpdate(environment, update);
}

bool CWorkFlow::CheckSelfUpdate(const CWorkFlowEnvironment& environment, CSelfUpdate& update)
{
    ZOLTA_ASSERT(environment.context != nullptr);
    if (!update.IsUpdateAvailable())
        return false;

    const QString title = Output::GetTranslated(Output::eTitle);
    // Cancel as the default of a box that offers only Ok makes Qt show both, Cancel the default.
    if (QMessageBox::question(nullptr, title, Output::GetTranslated(Output::eUpdateAvailable), QMessageBox::Ok,
                              QMessageBox::Cancel) != QMessageBox::Ok)
        return false;

    if (!update.DownloadUpdate()) {
        QMessageBox::warning(nullptr, title, Output::GetTranslated(Output::eCouldNotDownloadUpdate), QMessageBox::Ok);
        return false;
    }

    StoreArguments(ArgumentsForRestart(*environment.context));
    if (!update.GetDownloadedFile().IsEmpty())
        QProcess::startDetached(update.GetDownloadedFile().ToQString(), {update.GetArgument().ToQString()});
    QCoreApplication::exit(0);
    return true;
}

void CApplicationFactory::InstallEventHook(QCoreApplication* application)
{
    if (!application)
        return;
    // A child of the application, so it goes with it; the factory outlives both.
    auto* hook = new QtEventProxy(application);
    hook->SetHandler(QEvent::FileOpen, [this](QObject*, QEvent* event) {
        const QString file = static_cast<QFileOpenEvent*>(event)->file();
        if (!file.isEmpty())
            m_context.openedFiles.push_back(CAtlString(file));
        return true;
    });
    application->installEventFilter(hook);
}
