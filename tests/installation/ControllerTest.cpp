#include "configuration/CConfiguration.h"
#include "installation/CGalleryInstallation.h"
#include "installation/CInstallationController.h"
#include "support/GallerySourceBuilder.h"
#include "installation/IInstallationObserver.h"
#include "installation/InstalledXmlWriter.h"
#include "ProgressRecorder.h"
#include "installation/QtInstallationObserver.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <QCoreApplication>
#include <QThread>

#include <gtest/gtest.h>

#include <filesystem>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

const char kGalleryId[] = "gal-1";

// Keeps the lifecycle events and the thread each came on.
class EventRecorder : public IInstallationObserver {
public:
    std::vector<int> events;
    bool allOnMainThread = true;

    void OnOpening(CGalleryInstallation*) override { Add(0); }
    void OnOpened(CGalleryInstallation*) override { Add(1); }
    void OnOpenFailed(CGalleryInstallation*) override { Add(2); }
    void OnRunning(CGalleryInstallation*) override { Add(3); }
    void OnRunComplete(CGalleryInstallation*) override { Add(4); }
    void OnRunCanceled(CGalleryInstallation*) override { Add(5); }
    void OnRunFailed(CGalleryInstallation*) override { Add(6); }

private:
    void Add(int event)
    {
        events.push_back(event);
        allOnMainThread = allOnMainThread && QThread::currentThread() == QCoreApplication::instance()->thread();
    }
};

// Notes whether progress came from a thread other than the main one.
class ThreadNotingRecorder : public ProgressRecorder {
public:
    bool sawWorker = false;
    void Progress(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item, int percent,
                  int overall) override
    {
        sawWorker = sawWorker || QThread::currentThread() != QCoreApplication::instance()->thread();
        ProgressRecorder::Progress(stage, category, item, percent, overall);
    }
};

const PackageSpec kDog{"pkg.dog", "1.0", "dog.png", "woof", "Dog"};
const PackageSpec kCow{"pkg.cow", "1.0", "cow.png", "moo", "Cow"};

struct ControllerFixture : ::testing::Test {
    std::string collection = MakeScratchDir("collection");
    std::string source = MakeScratchDir("source");
    std::string gallery = MakeScratchDir("gallery");
    std::shared_ptr<CConfiguration> configuration = std::make_shared<CConfiguration>();
    std::unique_ptr<CInstallationController> controller;
    InstalledXmlWriter writer;
    EventRecorder events;
    ThreadNotingRecorder progress;

    void SetUp() override
    {
        ASSERT_TRUE(WriteFile(collection + "/configuration.xml",
                              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CCSettings Version=\"1.0.0.0\">"
                              "<Application><Title Value=\"Setup\"/></Application>"
                              "<Organization><Name Value=\"Org\"/></Organization>"
                              "<Gallery GUID=\"" +
                                  std::string(kGalleryId) +
                                  "\" DefaultSource=\"http://127.0.0.1:9/none\" Name=\"Animals\"/></CCSettings>\n"));
        ASSERT_TRUE(WriteFile(collection + "/metadata.xml",
                              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<lom:lom><lom:general><lom:identifier>"
                              "<lom:entry>gal-1</lom:entry></lom:identifier><lom:title><lom:string "
                              "language=\"en\">Animals</lom:string></lom:title></lom:general></lom:lom>\n"));
        ASSERT_TRUE(configuration->OpenCollectionDirectory(CAtlString(collection.c_str())));
        configuration->SetInstallDirectory(CZoltaDirectoryPath(gallery.c_str()));

        WritePackageZip(source, "dog.zip", kDog);
        WritePackageZip(source, "cow.zip", kCow);
        WriteDocument("1.0");

        controller = std::make_unique<CInstallationController>(configuration);
        writer.SetConfiguration(configuration);
        controller->AddObserver(&writer);
        controller->AddObserver(&events);
        controller->SetSource(CAtlString(source.c_str()));
    }

    void WriteDocument(const std::string& dogVersion, const std::string& galleryAttribute = "")
    {
        CategorySpec pets{"gal-1.pets", dogVersion, {{"en", "Pets"}}, {{"dog.zip", "pkg.dog", dogVersion, ""}}, {}, ""};
        CategorySpec farm{"gal-1.farm", "1.0", {{"en", "Farm"}}, {{"cow.zip", "pkg.cow", "1.0", ""}}, {}, ""};
        std::string xml = CategoriesXml({pets, farm});
        if (!galleryAttribute.empty())
            xml.replace(xml.find("<categories>"), 12, "<categories id=\"" + galleryAttribute + "\">");
        ASSERT_TRUE(WriteFile(source + "/gallery_categories.xml", xml));
    }

    std::string UpdateInfo() const { return ReadFile(gallery + "/Uninstall/updateinfo.xml"); }
};

}  // namespace

TEST_F(ControllerFixture, FindSourceChecksTheGalleryId)
{
    EXPECT_TRUE(controller->FindSource(CAtlString(source.c_str()))) << "derived from the first category's id";
    EXPECT_TRUE(controller->IsLocalSource());

    WriteDocument("1.0", kGalleryId);
    EXPECT_TRUE(controller->FindSource(CAtlString(source.c_str()))) << "stated on the categories element";

    WriteDocument("1.0", "another-gallery");
    EXPECT_FALSE(controller->FindSource(CAtlString(source.c_str())));
    EXPECT_EQ("http://127.0.0.1:9/none", U(controller->GetSource()));
    EXPECT_FALSE(controller->IsLocalSource());

    EXPECT_FALSE(controller->FindSource(CAtlString(MakeScratchDir("empty").c_str())));
    EXPECT_EQ("{AB-12}", U(CInstallationController::GalleryIdFromCategoryId(L"{AB-12}.x.y")));
    EXPECT_TRUE(CInstallationController::GalleryIdFromCategoryId(L"plain").IsEmpty());
}

TEST_F(ControllerFixture, InstallAllRunsOnAWorkerAndTellsTheLifecycleOnTheMainThread)
{
    EXPECT_FALSE(controller->HasInstalledData());
    ASSERT_TRUE(controller->InstallAll(&progress));
    EXPECT_EQ((std::vector<int>{1, 4}), events.events);
    EXPECT_TRUE(events.allOnMainThread);
    EXPECT_TRUE(progress.sawWorker);
    EXPECT_EQ(nullptr, controller->GetInstallation()) << "batch operations close";
    EXPECT_TRUE(controller->HasInstalledData());

    // Up to date: the window-based open selects nothing.
    events.events.clear();
    ASSERT_TRUE(controller->Open(&progress));
    EXPECT_EQ((std::vector<int>{0, 1}), events.events);
    controller->SelectUpdates();
    EXPECT_FALSE(controller->HasChanges());
    EXPECT_FALSE(controller->NoneInstalled());
}

TEST_F(ControllerFixture, UpdatesOnlyRunsInstalledUpdatesAndRestoresTheChoice)
{
    ASSERT_TRUE(controller->InstallSome({CAtlString(L"gal-1.pets")}, &progress));
    PackageSpec dog2 = kDog;
    dog2.version = "1.1";
    dog2.contentBytes = "woof 2";
    WritePackageZip(source, "dog.zip", dog2);
    WriteDocument("1.1");

    ASSERT_TRUE(controller->Open(&progress));
    ASSERT_TRUE(controller->HasUpdates());
    CGalleryInstallation* installation = controller->GetInstallation();
    installation->CategoryById(L"gal-1.farm")->SetAction(1);
    events.events.clear();
    controller->ApplyUpdatesOnly(&progress);
    EXPECT_EQ((std::vector<int>{3, 4}), events.events);
    EXPECT_EQ("woof 2", ReadFile(gallery + "/dog.png"));
    EXPECT_FALSE(Exists(gallery + "/cow.png")) << "the farm was chosen, not run";
    EXPECT_EQ(1, installation->CategoryById(L"gal-1.farm")->GetAction());
    EXPECT_TRUE(Contains(UpdateInfo(), "<category id=\"gal-1.pets\" version=\"1.1\"/>"));
}

namespace {

class CancelOnInstall : public ProgressRecorder {
public:
    CInstallationController* controller = nullptr;
    void Progress(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item, int percent,
                  int overall) override
    {
        if (stage == eGalleryInstallationProgressInstalling)
            controller->GetInstallation()->Cancel();
    }
};

}  // namespace

TEST_F(ControllerFixture, ACancelledRunCountsAsSuccess)
{
    ASSERT_TRUE(controller->Open(&progress));
    controller->SelectUpdates();
    ASSERT_TRUE(controller->HasChanges());
    CancelOnInstall cancelling;
    cancelling.controller = controller.get();
    events.events.clear();
    EXPECT_TRUE(controller->RunSelection(&cancelling));
    EXPECT_EQ((std::vector<int>{3, 5}), events.events);
    EXPECT_FALSE(Contains(UpdateInfo(), "gal-1.pets")) << "a cancelled install is not recorded";
}

TEST_F(ControllerFixture, AFailedOpenIsToldAndAStaleStateFileGoesOnOpen)
{
    controller->SetSource(CAtlString(MakeScratchDir("nothing").c_str()));
    EXPECT_FALSE(controller->Open(&progress));
    EXPECT_EQ((std::vector<int>{0, 2}), events.events);

    ASSERT_TRUE(WriteFile(gallery + "/Uninstall/updateinfo.xml", "<categories><category id=\"old\"/></categories>"));
    controller->SetSource(CAtlString(source.c_str()));
    ASSERT_TRUE(controller->Open(&progress));
    EXPECT_TRUE(controller->NoneInstalled());
    EXPECT_FALSE(Exists(gallery + "/Uninstall/updateinfo.xml"));
}

TEST_F(ControllerFixture, TheStateFileRecordsSuccessfulInstallsAndEveryUpdate)
{
    fs::remove(source + "/cow.zip");
    EXPECT_TRUE(controller->InstallAll(&progress)) << "a partial run is no failure";
    std::string info = UpdateInfo();
    EXPECT_TRUE(Contains(info, "gal-1.pets"));
    EXPECT_FALSE(Contains(info, "gal-1.farm"));

    // Updating the farm fails again; that run tells its failure.
    ASSERT_TRUE(controller->Open(&progress));
    controller->GetInstallation()->CategoryById(L"gal-1.farm")->SetAction(3);
    events.events.clear();
    EXPECT_FALSE(controller->RunSelection(&progress)) << "only failures";
    EXPECT_EQ((std::vector<int>{3, 6}), events.events);
    info = UpdateInfo();
    EXPECT_TRUE(Contains(info, "<category id=\"gal-1.farm\" version=\"1.0\"/>")) << "updates count whatever happened";

    // An install counts only with a result of exactly 0: not partly (1), not by a replaced record (4).
    CGalleryCategory* pets = controller->GetInstallation()->CategoryById(L"gal-1.pets");
    pets->SetAction(1);
    for (const auto& [result, recorded] :
         {std::pair{S_OK, true}, {S_FALSE, false}, {HRESULT(4), false}, {E_FAIL, false}}) {
        pets->SetResult(result);
        writer.Write(controller->GetInstallation());
        EXPECT_EQ(recorded, Contains(UpdateInfo(), "gal-1.pets")) << result;
    }
}

TEST(QtInstallationObserver, ThinsEventsOfOneStageButLetsChangesPass)
{
    struct Signal {
        eGalleryInstallationProgress stage;
        std::string title;
        std::string file;
    };
    std::vector<Signal> signals_;
    QtInstallationObserver observer;
    QObject::connect(&observer, &QtInstallationObserver::ProgressSignal,
                     [&](eGalleryInstallationProgress stage, CAtlString title, CAtlString file, int, int) {
                         signals_.push_back({stage, U(title), U(file)});
                     });
    observer.Progress(eGalleryInstallationProgressDownloading, nullptr, L"a", 0, 0);
    observer.Progress(eGalleryInstallationProgressDownloading, nullptr, L"a", 100, 0);
    observer.Progress(eGalleryInstallationProgressInstalling, nullptr, L"a", 0, 0);
    observer.Progress(eGalleryInstallationProgressInstalling, nullptr, nullptr, 100, 10);
    ASSERT_EQ(2u, signals_.size());
    EXPECT_EQ(eGalleryInstallationProgressInstalling, signals_[1].stage);
    EXPECT_EQ("a", signals_[1].file);
    EXPECT_TRUE(signals_[1].title.empty());
    QThread::msleep(QtInstallationObserver::kIntervalMs + 20);
    observer.Progress(eGalleryInstallationProgressInstalling, nullptr, nullptr, 100, 10);
    ASSERT_EQ(3u, signals_.size());
    EXPECT_TRUE(signals_[2].file.empty());
}
