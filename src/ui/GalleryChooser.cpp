#include "ui/GalleryChooser.h"

#include "configuration/CConfiguration.h"
#include "configuration/MetaDataXml.h"
#include "ui/Output.h"
#include "ui/UiResources.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

#include <stdexcept>

namespace {

const char kCollectionExtension[] = ".gallerycollection";

}  // namespace

GalleryChooser::GalleryChooser(std::shared_ptr<CConfiguration> configuration, UninstallFunction uninstall,
                               QWidget* parent)
    : QDialog(parent),
      m_configuration(std::move(configuration)),
      m_uninstall(std::move(uninstall))
{
    InitUiResources();
    setupUi(this);
    ZOLTA_ASSERT_TEXT(m_configuration, "px != 0");
    buttonBox->button(QDialogButtonBox::Ok)->setDefault(true);
    Fill();
}

QString GalleryChooser::CollectionFilter()
{
    return tr("Gallery Collections") + QStringLiteral(" (*") + QLatin1String(kCollectionExtension) +
           QStringLiteral(")");
}

void GalleryChooser::Fill()
{
    listWidget->clear();
    m_galleries.clear();
    for (const CGalleryRepositoryEntry& entry : CConfiguration::InstalledGalleries()) {
        // A gallery whose stored collection has gone cannot be opened: it is not offered.
        MetaDataXml metaData;
        if (!metaData.Read(entry.metadataPath))
            continue;
        const QString text = metaData.Title(CAtlString(L"en")).ToQString() + QStringLiteral(" (") +
                             entry.id.ToQString() + QStringLiteral(")");
        auto* row = new QListWidgetItem(text, listWidget);
        row->setData(Qt::UserRole, static_cast<int>(m_galleries.size()));
        m_galleries.push_back(entry);
    }
    OnItemSelectionChanged();
}

const CGalleryRepositoryEntry& GalleryChooser::SelectedEntry() const
{
    const int index = listWidget->selectedItems().first()->data(Qt::UserRole).toInt();
    if (index < 0)
        throw std::out_of_range("gallery row without an entry");
    return m_galleries.at(static_cast<size_t>(index));
}

void GalleryChooser::OnItemSelectionChanged()
{
    const bool selected = !listWidget->selectedItems().isEmpty();
    buttonBox->button(QDialogButtonBox::Ok)->setEnabled(selected);
    uninstallButton->setEnabled(selected);
}

void GalleryChooser::OnOk()
{
    if (!buttonBox->button(QDialogButtonBox::Ok)->isEnabled() || listWidget->selectedItems().isEmpty())
        return;
    m_configuration->OpenInstalled(SelectedEntry().id);
    if (!m_configuration->IsLoaded()) {
        Output::Error(Output::eCouldNotLoadConfiguration, true);
        return;
    }
    done(eListed);
}

void GalleryChooser::OnItemActivated(QListWidgetItem*)
{
    OnOk();
}

void GalleryChooser::OnBrowse()
{
    const QString file =
        QFileDialog::getOpenFileName(this, tr("Select a Gallery Collection to install"), QString(), CollectionFilter());
    if (file.isEmpty())
        return;
    m_configuration->OpenCollectionFile(CAtlString(file));
    if (!m_configuration->IsLoaded()) {
        Output::Error(Output::eCouldNotLoadConfiguration, true);
        return;
    }
    done(eCollectionFile);
}

void GalleryChooser::OnUninstall()
{
    if (listWidget->selectedItems().isEmpty())
        return;
    const QMessageBox::StandardButton answer = QMessageBox::question(
        this, Output::GetTranslated(Output::eTitle),
        tr("The selected Gallery will be completely removed from the system. Do you want to continue?"),
        QMessageBox::Yes | QMessageBox::No);
    if (answer != QMessageBox::Yes)
        return;
    const CGalleryRepositoryEntry entry = SelectedEntry();
    auto configuration = std::make_shared<CConfiguration>();
    if (!configuration->OpenInstalled(entry.id)) {
        Output::Error(Output::eCouldNotLoadConfiguration, true);
        return;
    }
    if (m_uninstall)
        m_uninstall(configuration, true, this);
    Fill();
}

void GalleryChooser::OnCancel()
{
    done(eCanceled);
}
