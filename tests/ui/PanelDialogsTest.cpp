// The collection's panel in the About box and the wait for the disc, and the translation of the
// marked pieces of a collection's HTML.

#include "ScratchCollection.h"
#include "ui/About.h"
#include "ui/AboutWidget.h"
#include "configuration/CConfiguration.h"
#include "support/TestEnvironment.h"
#include "ui/TranslatedHtml.h"
#include "ui/WaitForCDDlg.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QTimer>
#include <QTranslator>

#include <gtest/gtest.h>

#include <map>

using namespace curatool::test;

namespace {

const std::string kSample = CURATOOL_SOURCE_DIR "/samples/collection";

// A catalogue in memory; texts it does not know stay as they are.
class Catalogue : public QTranslator {
public:
    explicit Catalogue(std::map<QString, QString> texts)
        : m_texts(std::move(texts))
    {
        QCoreApplication::installTranslator(this);
    }
    ~Catalogue() override { QCoreApplication::removeTranslator(this); }
    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* source, const char*, int) const override
    {
        const auto found = m_texts.find(QString::fromUtf8(source));
        return found == m_texts.end() ? QString() : found->second;
    }

private:
    std::map<QString, QString> m_texts;
};

TEST(TranslatedHtmlTest, TranslatesInnermostFirstAndAlwaysDropsTheMarkers)
{
    const Catalogue catalogue({{"World", "Welt"}, {"Hello Welt", "Hallo Welt"}, {"Größe", "Size"}});
    struct Case {
        const char* html;
        const char* expected;
        bool broken;
    };
    const Case cases[] = {
        {"<p><translate>Hello <translate>World</translate></translate></p>", "<p>Hallo Welt</p>", false},
        {"<p><b><translate>Keep</translate></b> me</p>", "<p><b>Keep</b> me</p>", false},
        {"<html><p><translate>Größe</translate> &#169;</p></html>", "<html><p>Size ©</p></html>", false},
        {"<translate>Top</translate>", "Top", false},
        {"<p><translate>Open</p>", "<p>Open</p>", true},
        {"<p>a</p><p>b", "<p>a</p><p>b", true},
    };
    for (const Case& c : cases) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(QString::fromUtf8(c.expected), TranslateHtml(QString::fromUtf8(c.html))) << c.html;
        EXPECT_EQ(c.broken ? "Error parsing translated html.\n" : "", testing::internal::GetCapturedStderr()) << c.html;
    }
}

std::shared_ptr<CConfiguration> Collection(const std::string& application)
{
    auto configuration = std::make_shared<CConfiguration>();
    const std::string folder = WriteCollection("guid-panel", "Panel Gallery", application);
    EXPECT_TRUE(configuration->OpenCollectionDirectory(CAtlString(QString::fromStdString(folder))));
    return configuration;
}

TEST(AboutTest, ShowsThePanelAsTheCollectionAsks)
{
    struct Case {
        std::shared_ptr<CConfiguration> configuration;
        bool hasContent;
        QString name;
        QString textPart;  // empty: no text shown
        QSize picture;
        std::string complaint;
    };
    auto sample = std::make_shared<CConfiguration>();
    ASSERT_TRUE(sample->OpenCollectionDirectory(CAtlString(QString::fromStdString(kSample))));
    const QSize builtIn(420, 250);
    const auto missing = Collection("<SplashScreen ShowText=\"true\"/><About Value=\"gone.html\"/>");
    const Case cases[] = {
        {sample, true, "ZOLTA Sample Collection", "A small collection of pictures", QSize(32, 32), ""},
        {Collection("<SplashScreen ShowText=\"false\"/>"), false, "", "", builtIn, ""},
        {Collection("<SplashScreen ShowText=\"true\"/>"), true, "Panel Gallery", "", builtIn, ""},
        {missing, true, "Panel Gallery", "", builtIn,
         "Failed to load: " + missing->ResolvePath(CAtlString(L"gone.html")).ToQString().toStdString() + "\n"},
    };
    for (const Case& c : cases) {
        testing::internal::CaptureStderr();
        About about(c.configuration);
        EXPECT_EQ(c.complaint, testing::internal::GetCapturedStderr());
        const Ui::AboutWidget& panel = about.aboutWidget->Form();
        EXPECT_EQ(c.hasContent, about.HasContent()) << c.name.toStdString();
        EXPECT_EQ(c.name, panel.labelGalleryName->text());
        EXPECT_EQ(c.picture, about.aboutWidget->minimumSize());
        EXPECT_EQ(!c.textPart.isEmpty(), !panel.editAbout->isHidden());
        if (!c.textPart.isEmpty()) {
            EXPECT_TRUE(panel.editAbout->toPlainText().contains(c.textPart));
            EXPECT_FALSE(panel.editAbout->toHtml().contains("translate"));
        }
    }
}

TEST(WaitForCDTest, TakesTheDiscWhenItsDataAppearsAndPausesWhileTheUserLooks)
{
    auto configuration = std::make_shared<CConfiguration>();
    ASSERT_TRUE(configuration->OpenCollectionDirectory(CAtlString(QString::fromStdString(kSample))));
    const std::string disc = MakeScratchDir("disc");
    WaitForCDDlg dialog(configuration, CAtlString(QString::fromStdString(disc)));
    EXPECT_EQ("ZOLTA Curatool", dialog.windowTitle());
    EXPECT_TRUE(dialog.aboutWidget->Form().editAbout->toPlainText().contains(QString("Please insert Gallery CD: ") +
                                                                             QString::fromStdString(disc)));

    QTimer* poll = dialog.findChild<QTimer*>();
    ASSERT_NE(nullptr, poll);
    EXPECT_EQ(2000, poll->interval());
    bool pausedWhileLooking = false;
    // The disc arrives while the user looks for a collection file, who then gives up.
    QTimer::singleShot(50, &dialog, [&] {
        EXPECT_TRUE(poll->isActive());
        QTimer look;
        QObject::connect(&look, &QTimer::timeout, [&] {
            if (auto* files = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
                pausedWhileLooking = !poll->isActive();
                WriteFile(disc + "/Gallery Data Files/gallery_categories.xml", "<categories/>");
                files->reject();
            }
        });
        look.start(10);
        dialog.buttonBrowse->click();
        EXPECT_TRUE(poll->isActive());
        EXPECT_TRUE(dialog.isVisible());
    });
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(QDialog::Accepted, dialog.Exec());
    EXPECT_TRUE(pausedWhileLooking);
    EXPECT_EQ(disc + "/Gallery Data Files", dialog.GetFound().GetPath().ToQString().toStdString());
    EXPECT_FALSE(poll->isActive());
    EXPECT_EQ(dialog.minimumSize(), dialog.maximumSize());
    EXPECT_LT(clock.elapsed(), 6000);
}

}  // namespace
