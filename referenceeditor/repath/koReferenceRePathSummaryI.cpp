#include "koReferenceRePathSummaryI.h"

#include <QStringListModel>

koReferenceRePathSummaryI::koReferenceRePathSummaryI(QWidget* parent)
    : QDialog(parent)
{
    setupUi(this);
    setWindowTitle(tr("Repath"));
    m_message3->setText(tr("Missing files have been identified for the attempted repath. Select OK to complete the "
                           "repath (this action is not undoable) or Cancel to abort the repath."));
    connect(m_okButton, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    m_model = new QStringListModel(this);
    m_listView->setModel(m_model);
    m_listView->setEditTriggers(QAbstractItemView::NoEditTriggers);
}

void koReferenceRePathSummaryI::setList(const QStringList& paths)
{
    if (m_model)
        m_model->setStringList(paths);
}

void koReferenceRePathSummaryI::setMessage1(const QString& text)
{
    m_message1->setText(text);
}

void koReferenceRePathSummaryI::setMessage2(const QString& text)
{
    m_message2->setText(text);
}
