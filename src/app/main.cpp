#include "app/CApplicationFactory.h"
#include "app/CInstanceSemaphore.h"
#include "app/CProgramIdentity.h"
#include "app/DisplayPlatform.h"
#include "ui/Output.h"
#include "foundation/Qtfier.h"
#include "foundation/RunTempFolder.h"
#include "app/StartupSteps.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace {

const int kInstanceProjectId = 0x71;

// Steps from the program's own catalogue to the end of the event loop; only the run that does
// the work gets here, a relaunching run never holds the lock.
int RunWithLock(CApplicationFactory& factory)
{
    StartupSteps::LoadProgramCatalogue();
    factory.InstallTranslator(QCoreApplication::instance());
    Output::Initialize();

    // The window-based work flows are those that still want privileges.
    if (factory.WantsElevation())
        StartupSteps::ApplyWindowLook(factory);

    const QByteArray programPath = QCoreApplication::applicationFilePath().toLocal8Bit();
    CInstanceSemaphore lock(programPath.constData(), kInstanceProjectId);
    if (!lock.IsLocked()) {
        Output::Error(Output::eAnotherInstance, false);
        return 1;
    }
    // Every temporary file of this run in one folder of its own, and those of killed runs gone.
    const RunTempFolder runTemp;

    const int status = StartupSteps::InitializeGalleryLibrary();
    if (status != 0)
        QCoreApplication::exit(status);

    // The work flow runs inside the event loop, so that it can use dialogs, signals and exit().
    auto slotObject = std::make_unique<Qtfier>([&factory] { QCoreApplication::exit(factory.Run()); });
    QTimer::singleShot(0, slotObject.get(), SLOT(Slot()));

    const int result = QApplication::exec();
    StartupSteps::ShutdownGalleryLibrary();
    slotObject.reset();
    lock.Release();
    return result;
}

}  // namespace

int main(int argc, char** argv)
{
    DisplayPlatform::Prepare();

    int result = 0;
    {
        CApplicationFactory factory;
        auto application = std::make_unique<QApplication>(argc, argv);
        QApplication::setQuitOnLastWindowClosed(false);
        factory.InstallEventHook(application.get());
        CProgramIdentity::Apply();

        factory.ParseCommandLine(argc, argv);
        factory.Context().applicationPath = CAtlString(QCoreApplication::applicationFilePath());
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::ExcludeSocketNotifiers, 500);

        if (factory.WantsElevation() && DisplayPlatform::IsHeadless()) {
            std::fprintf(stderr, "%s\n", DisplayPlatform::NoDisplayMessage());
            result = 1;
        } else if (factory.NeedsElevation()) {
            result = factory.RelaunchElevated();
        } else {
            result = RunWithLock(factory);
        }
        application.reset();
    }
    return result;
}
