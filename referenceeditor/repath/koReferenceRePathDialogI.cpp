#include "koReferenceRePathDialogI.h"

#include <kovis/koFileDialog.h>
#include <kovis/koIconManager.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koPlatformService.h>

koReferenceRePathDialogI::koReferenceRePathDialogI(QWidget* parent)
    : QDialog(parent)
{
    setupUi(this);
    const auto* platform = koService<koPlatformService>();
    const QSize iconSize(platform->getIconWidth(), platform->getIconHeight());
    m_newPathButton->setIcon(koIconManager::getIcon(QStringLiteral("FileOpen"), QString()));
    m_newPathButton->setIconSize(iconSize);
    m_newPathButton->setFixedSize(iconSize + QSize(2, 2));
    setWindowTitle(tr("Repath"));
    connect(m_newPathButton, &QPushButton::clicked, this, &koReferenceRePathDialogI::selectNewPath);
    connect(m_okButton, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cancelButton, &QPushButton::clicked, this, &QDialog::reject);
}

QString koReferenceRePathDialogI::newPath() const
{
    return m_newPath->text();
}

bool koReferenceRePathDialogI::missingFilesOnly() const
{
    return m_affectedFiles->currentIndex() != 0;
}

bool koReferenceRePathDialogI::searchSubdirectories() const
{
    return m_searchSubdirs->isChecked();
}

void koReferenceRePathDialogI::selectNewPath()
{
    const QString folder = koFileDialog::getExistingDirectoryForField(this, tr("Repath"), m_newPath->text());
    if (!folder.isEmpty())
        m_newPath->setText(folder);
}
