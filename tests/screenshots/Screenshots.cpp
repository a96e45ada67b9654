// Renders the program's dialogs into PNG files, each as the user meets it, over the sample
// collection and a copy of the sample source; scripts/screenshots.sh runs it in a scratch home.
//
//   curatool_screenshots <output folder> <samples folder>

#include "ui/About.h"
#include "app/CApplicationFactory.h"
#include "configuration/CConfiguration.h"
#include "installation/CGalleryCategory.h"
#include "installation/CGalleryInstallation.h"
#include "installation/CInstallationController.h"
#include "ui/CPasswordDialog.h"
#include "app/CProgramIdentity.h"
#include "ui/GalleryChooser.h"
#include "ui/MainWindow.h"
#include "ui/Output.h"
#include "ui/ProgressDlg.h"
#include "ui/ProxyAuth.h"
#include "installation/QtInstallationObserver.h"
#include "ui/ReadProgressDlg.h"
#include "app/StartupSteps.h"
#include "ui/WaitForCDDlg.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTimer>
#include <QTreeWidget>

#include <cstdio>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

QString g_output;
int g_written = 0;

void Save(QWidget& window, const char* name)
{
    window.show();
    QCoreApplication::processEvents();
    const QString path = g_output + "/" + name + ".png";
    if (window.grab().save(path)) {
        std::printf("%s\n", path.toLocal8Bit().constData());
        ++g_written;
    } else
        std::fprintf(stderr, "could not write %s\n", path.toLocal8Bit().constData());
}

// Grabs the window once, at the first event of `stage` that has reached it.
void SaveAt(QtInstallationObserver* observer, QWidget& window, eGalleryInstallationProgress stage, const char* name)
{
    auto done = std::make_shared<bool>(false);
    QObject::connect(
        observer, &QtInstallationObserver::ProgressSignal, &window,
        [&window, stage, name, done](eGalleryInstallationProgress seen) {
            if (*done || seen != stage)
                return;
            *done = true;
            Save(window, name);
        },
        Qt::QueuedConnection);
}

// A second collection beside the sample, so that the chooser has a list to show; it brings no
// logo, so its panel shows the program's own picture.
QString SecondCollection(const QString& samples, const QString& scratch)
{
    const QString folder = scratch + "/primer-collection";
    fs::copy((samples + "/collection").toStdString(), folder.toStdString(), fs::copy_options::recursive);
    for (const char* name : {"configuration.xml", "metadata.xml", "about.html"}) {
        QFile file(folder + "/" + name);
        file.open(QIODevice::ReadOnly);
        QString text = QString::fromUtf8(file.readAll());
        file.close();
        text.replace("5a0f3c2e-8d41-4b6a-9c57-2e1d7b9f0a31", "9b3e61d4-0f7a-4c2b-8e15-6d2a9c4f7b10");
        text.replace("ZOLTA Sample Collection", "ZOLTA Primer Collection");
        text.replace("<Logo Value=\"logo.png\"/>", "");
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        file.write(text.toUtf8());
    }
    return folder;
}

void Register(const QString& folder)
{
    CConfiguration configuration;
    if (configuration.OpenCollectionDirectory(CAtlString(folder)) && configuration.StoreConfiguration()) {
        configuration.ComposeRepositoryEntry();
        configuration.Register();
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s <output folder> <samples folder>\n", argv[0]);
        return 2;
    }
    CApplicationFactory factory;
    QApplication application(argc, argv);
    CProgramIdentity::Apply();
    g_output = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    const QString samples = QDir(QString::fromLocal8Bit(argv[2])).absolutePath();
    QDir().mkpath(g_output);
    const QString scratch = QDir::tempPath() + "/curatool-screenshots";
    QDir(scratch).removeRecursively();
    QDir().mkpath(scratch);

    // As a window-based start with -configuration: the collection's style sheet joins the program's.
    if (!factory.LoadConfigurationPath(CAtlString(samples + "/collection"))) {
        std::fprintf(stderr, "could not load the sample collection\n");
        return 1;
    }
    StartupSteps::ApplyWindowLook(factory);
    Output::Initialize();
    const std::shared_ptr<CConfiguration> configuration = factory.Configuration();
    const QString gallery = scratch + "/gallery";
    const QString source = scratch + "/source";
    fs::copy((samples + "/source").toStdString(), source.toStdString(), fs::copy_options::recursive);
    configuration->SetInstallDirectory(CZoltaDirectoryPath(gallery));
    auto controller = std::make_shared<CInstallationController>(configuration);

    {
        ReadProgressDlg reading(configuration);
        SaveAt(static_cast<QtInstallationObserver*>(reading.GetObserver()), reading,
               eGalleryInstallationProgressReading, "reading");
        reading.ShowCentred();
        // The dialogs are pictured whatever the engine gives back.
        static_cast<void>(controller->OpenInstallation(CZoltaDirectoryPath(gallery), CAtlString(source),
                                                       reading.GetObserver(), false));
        QCoreApplication::processEvents();
        reading.hide();
    }
    {
        ProgressDlg progress(controller);
        SaveAt(static_cast<QtInstallationObserver*>(progress.GetObserver()), progress,
               eGalleryInstallationProgressInstalling, "progress");
        progress.setModal(true);
        progress.show();
        if (CGalleryInstallation* installation = controller->GetInstallation())
            for (int i = 0; i < installation->CategoryCount(); ++i)
                installation->Category(i)->SetAction(eGalleryCategoryActionInstall);
        static_cast<void>(controller->RunSelection(progress.GetObserver()));
        QCoreApplication::processEvents();
        QTimer::singleShot(0, &progress, [&progress] {
            Save(progress, "progress-finished");
            progress.cancelButton->click();
        });
        progress.Finish();
    }
    {
        // The main window over a gallery that has Animals and Maps, while the source offers a
        // newer Animals: Sounds chosen to add, the Animals update, Maps to remove.
        const QString installed = scratch + "/gallery-with-update";
        auto state = std::make_shared<CInstallationController>(configuration);
        if (state->OpenInstallation(CZoltaDirectoryPath(installed), CAtlString(source), nullptr, false)) {
            for (int i : {0, 1})
                state->GetInstallation()->Category(i)->SetAction(eGalleryCategoryActionInstall);
            static_cast<void>(state->Run(nullptr));  // pictured whatever it returns
        }
        state->Close();
        QFile document(source + "/gallery_categories.xml");
        document.open(QIODevice::ReadOnly);
        QString text = QString::fromUtf8(document.readAll());
        document.close();
        text.replace("id=\"zsc.pkg.animals.birds\" version=\"1.0\"", "id=\"zsc.pkg.animals.birds\" version=\"1.1\"");
        document.open(QIODevice::WriteOnly | QIODevice::Truncate);
        document.write(text.toUtf8());
        document.close();

        configuration->SetInstallDirectory(CZoltaDirectoryPath(installed));
        state->SetSource(CAtlString(source));
        MainWindow window(state, configuration, nullptr);
        state->AddObserver(&window);
        static_cast<void>(state->Open(nullptr));  // pictured whatever it returns
        auto* categories = window.findChild<QTreeWidget*>(QStringLiteral("treeWidgetCategories"));
        auto* updates = window.findChild<QTreeWidget*>(QStringLiteral("treeWidgetUpdates"));
        window.OnCategoryClicked(categories->topLevelItem(0)->child(2), 0);
        window.OnCategoryClicked(categories->topLevelItem(0)->child(1), 0);
        window.OnUpdateClicked(updates->topLevelItem(0)->child(0), 0);
        Save(window, "mainwindow");
        state->Close();
    }
    {
        About about(configuration);
        about.adjustSize();
        Save(about, "about");
    }
    const QString primer = SecondCollection(samples, scratch);
    {
        auto withoutLogo = std::make_shared<CConfiguration>();
        static_cast<void>(withoutLogo->OpenCollectionDirectory(CAtlString(primer)));  // pictured as it comes
        About about(withoutLogo);
        about.adjustSize();
        Save(about, "about-built-in-picture");
    }
    {
        WaitForCDDlg wait(configuration, CAtlString(L"/media/cdrom"));
        wait.show();
        wait.adjustSize();
        Save(wait, "waitforcd");
    }
    {
        Register(samples + "/collection");
        Register(primer);
        GalleryChooser chooser(std::make_shared<CConfiguration>(), {});
        chooser.listWidget->setCurrentRow(0);
        Save(chooser, "chooser");
    }
    {
        QString user = QStringLiteral("teacher");
        QString password;
        CPasswordDialog login(nullptr, user, password, false);
        Save(login, "password");
    }
    {
        ProxyAuth proxy;
        proxy.SetHost(QStringLiteral("proxy.school.example"));
        proxy.SetPort(3128);
        Save(proxy, "proxy-credentials");
    }
    QDir(scratch).removeRecursively();
    return g_written == 10 ? 0 : 1;
}
