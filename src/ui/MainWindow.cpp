#include "ui/MainWindow.h"

#include "ui/About.h"
#include "configuration/CApplicationData.h"
#include "libZoltaAtl/CAtlStringA.h"
#include "configuration/CConfiguration.h"
#include "ui/CContentChooserCheckBox.h"
#include "installation/CGalleryCategory.h"
#include "installation/CGalleryInstallation.h"
#include "installation/CInstallationController.h"
#include "ui/CategoryActionSummary.h"
#include "ui/GalleryItemWrapper.h"
#include "ui/Output.h"
#include "ui/PathSelector.h"
#include "ui/ProgressDlg.h"
#include "network/ProxyHandler.h"
#include "ui/ReadProgressDlg.h"
#include "ui/UiResources.h"
#include "libZoltaAtl/ZoltaAssert.h"
#include "ui_MainWindow.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPalette>

#include <map>

namespace {

const int kRootId = 1;
const int kFirstCategoryId = 2;

const QString kMessageTitle = QStringLiteral("Curatool");

}  // namespace

MainWindow::MainWindow(std::shared_ptr<CInstallationController> controller,
                       std::shared_ptr<CConfiguration> configuration, ProxyHandler* proxyHandler, bool sourceAvailable,
                       QWidget* parent)
    : QDialog(parent, Qt::WindowTitleHint | Qt::WindowMinimizeButtonHint),
      m_ui(std::make_unique<Ui::MainWindow>()),
      m_categoriesController(this),
      m_controller(std::move(controller)),
      m_configuration(std::move(configuration)),
      m_proxyHandler(proxyHandler)
{
    ZOLTA_ASSERT(m_controller != nullptr && m_configuration != nullptr);
    InitUiResources();
    m_readProgress = new ReadProgressDlg(m_configuration, this);
    m_readProgress->setModal(true);

    m_ui->setupUi(this);
    // A local source needs no connection, so there is nothing to configure.
    if (m_controller->IsLocalSource())
        Button(QDialogButtonBox::Reset)->setEnabled(false);
    Button(QDialogButtonBox::Help)->setText(tr("About"));
    Button(QDialogButtonBox::Ok)->setText(tr("Next >>"));
    Button(QDialogButtonBox::Reset)->setText(tr("Connection Options"));
    Button(QDialogButtonBox::Ok)->setEnabled(false);

    connect(m_ui->buttonBox, &QDialogButtonBox::accepted, this, &MainWindow::OnOk);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this, &MainWindow::OnCancel);
    connect(Button(QDialogButtonBox::Reset), &QPushButton::clicked, this, &MainWindow::OnProxyOptions);
    connect(Button(QDialogButtonBox::Help), &QPushButton::clicked, this, &MainWindow::OnAbout);
    connect(m_ui->buttonBrowse, &QPushButton::clicked, this, &MainWindow::OnBrowse);
    connect(m_ui->treeWidgetCategories, &QTreeWidget::itemClicked, this, &MainWindow::OnCategoryClicked);
    connect(m_ui->treeWidgetUpdates, &QTreeWidget::itemClicked, this, &MainWindow::OnUpdateClicked);
    m_ui->treeWidgetCategories->installEventFilter(this);
    m_ui->treeWidgetUpdates->installEventFilter(this);

    m_ui->treeWidgetCategories->setColumnCount(2);
    m_ui->treeWidgetCategories->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_ui->treeWidgetCategories->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_ui->treeWidgetCategories->header()->setStretchLastSection(true);
    m_ui->treeWidgetUpdates->setColumnCount(1);
    m_ui->treeWidgetUpdates->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_ui->treeWidgetUpdates->header()->setStretchLastSection(true);
    m_ui->treeWidgetCategories->setHeaderHidden(true);
    m_ui->treeWidgetUpdates->setHeaderHidden(true);

    // The three headings show as bars in the highlight colours.
    QPalette palette = m_ui->labelCategories->palette();
    const QBrush highlight = palette.brush(QPalette::Highlight);
    const QBrush highlightedText = palette.brush(QPalette::HighlightedText);
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        palette.setBrush(group, QPalette::Window, highlight);
        palette.setBrush(group, QPalette::WindowText, highlightedText);
    }
    for (QLabel* label : {m_ui->labelCategories, m_ui->labelUpdates, m_ui->labelActions})
        label->setPalette(palette);

    m_about = new About(m_configuration, this);
    if (!m_about->HasContent())
        Button(QDialogButtonBox::Help)->hide();

    if (!sourceAvailable)
        SetOnline(false);

    const CAtlString title =
        m_configuration->GetApplication() ? m_configuration->GetApplication()->GetTitle() : CAtlString();
    setWindowTitle(tr(title.ToQString().toUtf8().constData()));
}

MainWindow::~MainWindow() = default;

QPushButton* MainWindow::Button(QDialogButtonBox::StandardButton which) const
{
    return m_ui->buttonBox->button(which);
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_ui->treeWidgetCategories && watched != m_ui->treeWidgetUpdates)
        return QDialog::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease)
        return static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space;
    return false;
}

void MainWindow::OnOpening(CGalleryInstallation*)
{
    // The boxes point at the category records that the new open replaces.
    m_categoriesController.Clear();
    m_updatesController.Clear();
    m_ui->treeWidgetCategories->clear();
    m_ui->treeWidgetUpdates->clear();
    m_categoriesController.ResetTotals();
}

void MainWindow::OnOpened(CGalleryInstallation*)
{
    CGalleryInstallation* installation = m_controller->GetInstallation();
    if (m_controller->NoneInstalled()) {
        m_ui->buttonBrowse->setEnabled(true);
        if (m_restoreSelection && installation) {
            for (const CAtlString& id : m_savedSelection)
                if (CGalleryCategory* category = installation->CategoryById(id))
                    category->SetAction(eGalleryCategoryActionInstall);
            m_savedSelection.clear();
        }
    } else {
        // Installed content can't be moved to another folder.
        m_ui->buttonBrowse->setEnabled(false);
    }
    m_restoreSelection = false;
    m_ui->lineEditLocation->setText(m_controller->GetDestination().ToQString());
    BuildTrees();
    RefreshSummary();
    EnableOk();
}

void MainWindow::OnOpenFailed(CGalleryInstallation*)
{
    QMessageBox::critical(this, kMessageTitle, tr("Failed to read current state of the Gallery."), QMessageBox::Ok);
}

void MainWindow::OnRunCanceled(CGalleryInstallation*)
{
    QMessageBox::warning(this, kMessageTitle, tr("The Gallery changes have been canceled."), QMessageBox::Ok);
}

void MainWindow::OnRunFailed(CGalleryInstallation*)
{
    QMessageBox::critical(this, kMessageTitle,
                          tr("The Curatool encountered an error while trying to make the changes. "
                             "The changes have not been completed."),
                          QMessageBox::Ok);
}

void MainWindow::BuildTrees()
{
    CGalleryInstallation* installation = m_controller->GetInstallation();
    if (!installation)
        return;
    m_categoriesController.Clear();
    m_updatesController.Clear();
    m_ui->treeWidgetCategories->clear();
    m_ui->treeWidgetUpdates->clear();
    m_categoriesController.SetCheckColumn(0);
    m_updatesController.SetCheckColumn(0);
    m_categoriesController.SetSizeColumn(1);

    auto* categoriesRoot = new QTreeWidgetItem(m_ui->treeWidgetCategories);
    categoriesRoot->setData(0, Qt::UserRole, kRootId);
    categoriesRoot->setText(0, tr("All Categories"));
    categoriesRoot->setIcon(0, QIcon(QStringLiteral(":/images/curatool.png")));
    m_categoriesController.CreateBox(kRootId, 0, categoriesRoot);

    auto* updatesRoot = new QTreeWidgetItem(m_ui->treeWidgetUpdates);
    updatesRoot->setData(0, Qt::UserRole, kRootId);
    m_updatesController.CreateBox(kRootId, 0, updatesRoot);

    for (int index = 0; index < installation->CategoryCount(); ++index) {
        const int id = kFirstCategoryId + index;
        auto wrapper = std::make_shared<GalleryItemWrapper>(installation->Category(index));

        auto* categoryItem = new QTreeWidgetItem(categoriesRoot);
        categoryItem->setData(1, Qt::TextAlignmentRole, int(Qt::AlignRight));
        categoryItem->setData(0, Qt::UserRole, id);
        m_categoriesController.CreateBox(id, kRootId, categoryItem);
        m_categoriesController.AddItem(id, wrapper);

        auto* updateItem = new QTreeWidgetItem(updatesRoot);
        updateItem->setData(0, Qt::UserRole, id);
        m_updatesController.CreateBox(id, kRootId, updateItem);
        m_updatesController.AddItem(id, wrapper);
    }
    categoriesRoot->setExpanded(true);
    m_categoriesController.Recount();

    if (!m_offline && m_controller->HasUpdates()) {
        updatesRoot->setText(0, tr("All Updates"));
        updatesRoot->setExpanded(true);
    } else {
        updatesRoot->setText(0, tr("No updates available at this time"));
        updatesRoot->setFlags(Qt::NoItemFlags);
    }
}

void MainWindow::OnCategoryClicked(QTreeWidgetItem* item, int)
{
    if (!item)
        return;
    m_categoriesController.Click(item->data(0, Qt::UserRole).toInt());
    RefreshSummary();
}

void MainWindow::OnUpdateClicked(QTreeWidgetItem* item, int)
{
    if (!item)
        return;
    m_updatesController.Click(item->data(0, Qt::UserRole).toInt());
    RefreshSummary();
}

void MainWindow::RefreshSummary()
{
    CGalleryInstallation* installation = m_controller->GetInstallation();
    if (!installation)
        return;
    m_ui->listWidgetActions->clear();

    // Each group is its heading followed by its categories; the keys keep add, update, remove.
    std::map<int, std::vector<QListWidgetItem*>> groups;
    for (const CategoryActionSummary& summary : CategoryActionSummaries()) {
        auto* heading = new QListWidgetItem(QIcon(QString::fromLatin1(summary.icon)), summary.Heading());
        QFont font = heading->font();
        font.setWeight(QFont::Bold);
        font.setPointSize(font.pointSize() + 1);
        heading->setFont(font);
        groups[summary.action].push_back(heading);
    }
    for (int index = 0; index < installation->CategoryCount(); ++index) {
        const CGalleryCategory* category = installation->Category(index);
        const auto group = groups.find(category->GetAction());
        if (group != groups.end())
            group->second.push_back(new QListWidgetItem(QStringLiteral("  - ") + category->GetTitle().ToQString()));
    }
    for (auto& [action, items] : groups) {
        for (QListWidgetItem* item : items)
            m_ui->listWidgetActions->addItem(item);
        if (items.size() == 1)
            items.front()->setHidden(true);
        else
            m_ui->listWidgetActions->addItem(new QListWidgetItem());
    }
    EnableOk();
}

void MainWindow::EnableOk()
{
    Button(QDialogButtonBox::Ok)->setEnabled(m_controller->HasChanges());
}

bool MainWindow::RemovesEverything() const
{
    const CGalleryInstallation* installation = m_controller->GetInstallation();
    if (!installation)
        return false;
    for (int index = 0; index < installation->CategoryCount(); ++index) {
        const CGalleryCategory* category = installation->Category(index);
        if (category->IsInstalled() && category->GetAction() == eGalleryCategoryActionUninstall)
            continue;
        if (category->IsInstalled() || category->GetAction() == eGalleryCategoryActionInstall)
            return false;
    }
    return true;
}

void MainWindow::OnOk()
{
    if (!m_controller->HasChanges()) {
        QCoreApplication::exit(0);
        return;
    }
    bool removeRecords = RemovesEverything();
    if (removeRecords && QMessageBox::question(this, kMessageTitle,
                                               tr("Do you also want to delete all the information about this Gallery?"),
                                               QMessageBox::Yes | QMessageBox::No) != QMessageBox::Yes)
        removeRecords = false;

    hide();
    ProgressDlg progress(m_controller, this);
    progress.setModal(true);
    progress.show();
    // The outcome reaches this window as a lifecycle event, which tells the user.
    static_cast<void>(m_controller->RunSelection(progress.GetObserver()));
    if (removeRecords) {
        m_configuration->RemoveStoredFiles();
        m_configuration->Unregister();
        m_recordsRemoved = true;
    }
    progress.Finish();
    progress.hide();
    QCoreApplication::exit(0);
}

void MainWindow::OnCancel()
{
    QCoreApplication::exit(0);
}

void MainWindow::Reopen()
{
    m_readProgress->ShowCentred();
    // A failed read reaches this window as a lifecycle event, which tells the user.
    static_cast<void>(m_controller->Open(m_readProgress->GetObserver()));
    m_readProgress->hide();
}

void MainWindow::OnBrowse()
{
    PathSelector selector;
    selector.SetPath(m_controller->GetDestination().GetPath());
    if (!selector.Exec(this, CAtlString(tr("Select a folder for new gallery location"))))
        return;
    m_configuration->SetInstallDirectory(CZoltaDirectoryPath(selector.GetPath()));
    m_ui->lineEditLocation->setText(selector.GetPath().ToQString());

    // The open below builds new category records; the choice is carried over by id.
    m_restoreSelection = true;
    m_savedSelection.clear();
    if (const CGalleryInstallation* installation = m_controller->GetInstallation())
        for (int index = 0; index < installation->CategoryCount(); ++index)
            if (installation->Category(index)->GetAction() == eGalleryCategoryActionInstall)
                m_savedSelection.push_back(installation->Category(index)->GetId());
    Reopen();
}

void MainWindow::ClearAndRefresh()
{
    m_controller->ClearSelection();
    m_categoriesController.RefreshAll();
    m_categoriesController.Recount();
    m_updatesController.RefreshAll();
    RefreshSummary();
}

void MainWindow::OnProxyOptions()
{
    ZOLTA_ASSERT(m_proxyHandler != nullptr);
    if (!m_proxyHandler->ConfigureDialog(this))
        return;
    const CAtlString source = m_controller->GetSource();
    CAtlString reason;
    if (!m_controller->TestUrl(source, &reason)) {
        SetOnline(false);
        ClearAndRefresh();
        Output::ErrorWithReason(Output::eCouldNotDownload, CAtlStringA(source.ToQString().toUtf8().constData()),
                                CAtlStringA(reason.ToQString().toUtf8().constData()), true);
        return;
    }
    SetOnline(true);
    Reopen();
    ClearAndRefresh();
}

void MainWindow::SetOnline(bool online)
{
    m_offline = !online;
    m_categoriesController.SetOffline(!online);
    m_updatesController.SetOffline(!online);
    m_ui->treeWidgetCategories->setAlternatingRowColors(online);
    m_ui->treeWidgetUpdates->setAlternatingRowColors(online);
}

void MainWindow::OnUpdate()
{
    m_readProgress->ShowCentred();
    m_controller->ApplyUpdatesOnly(m_readProgress->GetObserver());
    m_readProgress->hide();
    Reopen();
}

void MainWindow::OnAbout()
{
    if (!m_about->HasContent())
        return;
    m_about->setModal(true);
    m_about->show();
    m_about->adjustSize();
    m_about->setFixedSize(m_about->size());
    m_about->exec();
    m_about->hide();
}
