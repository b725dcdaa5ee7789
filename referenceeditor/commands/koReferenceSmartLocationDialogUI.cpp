#include "koReferenceSmartLocationDialogUI.h"

#include "koFolderWriteTest.h"

#include <kovis/koFileDialog.h>
#include <kovis/koIconManager.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPlatformService.h>
#include <kovis/koReferenceService.h>
#include <kovis/koReferenceTypes.h>

#include <QMessageBox>

koReferenceSmartLocationDialogUI::koReferenceSmartLocationDialogUI(QWidget* parent)
    : QDialog(parent)
{
    setupUi(this);
    setUpChooseFolderButton();
    connect(m_location, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &koReferenceSmartLocationDialogUI::enableCustomFolder);
    connect(m_chooseFolder, &QToolButton::clicked, this, &koReferenceSmartLocationDialogUI::chooseFolder);
    connect(buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);

    const auto* references = koService<koReferenceService>();
    m_location->setCurrentIndex(references->getSmartReferenceStoreMode() != 0 ? koReferenceTypes::CustomFolder
                                                                              : koReferenceTypes::NextToSourceFile);
    m_customPath->setText(references->getSmartReferenceStoreLocation());
}

void koReferenceSmartLocationDialogUI::setUpChooseFolderButton()
{
    const auto* platform = koService<koPlatformService>();
    m_chooseFolder->setIconSize(QSize(platform->getIconWidth(), platform->getIconHeight()));
    m_chooseFolder->setIcon(koIconManager::getIcon(QStringLiteral("FileOpen"), QString()));
    const QSize size(qRound(24 * platform->getUiScaleFactorX()), qRound(24 * platform->getUiScaleFactorY()));
    m_chooseFolder->setMinimumSize(size);
    m_chooseFolder->setMaximumSize(size);
    m_chooseFolder->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_chooseFolder->setToolTip(tr("Opens a file browser for choosing the storage folder"));
}

void koReferenceSmartLocationDialogUI::setAllHaveSource(bool allHaveSource)
{
    if (!allHaveSource)
        m_location->setCurrentIndex(koReferenceTypes::CustomFolder);
    m_location->setVisible(allHaveSource);
    m_locationLabel->setVisible(allHaveSource);
    m_customLabel->setText(allHaveSource ? QString() : tr("Location"));
}

QString koReferenceSmartLocationDialogUI::customFolder() const
{
    return m_customPath->text();
}

int koReferenceSmartLocationDialogUI::locationIndex() const
{
    return m_location->currentIndex();
}

void koReferenceSmartLocationDialogUI::enableCustomFolder(int locationIndex)
{
    const bool custom = locationIndex == koReferenceTypes::CustomFolder;
    m_customPath->setEnabled(custom);
    m_chooseFolder->setEnabled(custom);
}

void koReferenceSmartLocationDialogUI::chooseFolder()
{
    const QString folder =
        koFileDialog::getExistingDirectoryForField(this, tr("Custom Smart Reference Location"), m_customPath->text());
    if (folder.isEmpty())
        return;
    if (!koFolderWriteTest::isWritable(folder)) {
        QMessageBox::critical(this, tr("Create Smart References"),
                              tr("You appear to not have write permissions for this directory. Please choose a new "
                                 "directory."),
                              QMessageBox::Ok);
        return;
    }
    m_customPath->setText(folder);
}
