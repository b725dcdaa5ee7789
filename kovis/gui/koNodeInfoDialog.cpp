#include <kovis/koNodeInfoDialog.h>

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

koNodeInfoDialog::koNodeInfoDialog(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("koNodeInfoDialog"));
    auto* layout = new QVBoxLayout(this);
    auto* scrollArea = new QScrollArea(this);
    scrollArea->setObjectName(QStringLiteral("infoScrollArea"));
    scrollArea->setWidgetResizable(true);
    scrollArea->setFrameShape(QFrame::NoFrame);
    auto* content = new QWidget(scrollArea);
    m_grid = new QGridLayout(content);
    m_grid->setObjectName(QStringLiteral("infoGrid"));
    m_grid->setColumnStretch(1, 1);
    m_grid->setHorizontalSpacing(16);
    m_grid->setAlignment(Qt::AlignTop);
    scrollArea->setWidget(content);
    layout->addWidget(scrollArea);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->setObjectName(QStringLiteral("buttonBox"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    resize(420, 360);
}

void koNodeInfoDialog::addSection(const QString& title)
{
    const int row = m_rows++;
    auto* label = new QLabel(title, this);
    label->setObjectName(QStringLiteral("infoSection"));
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    if (row > 0)
        label->setContentsMargins(0, 8, 0, 0);
    m_grid->addWidget(label, row, 0, 1, 2);
}

void koNodeInfoDialog::addInfo(const QString& label, const QString& value)
{
    const int row = m_rows++;
    auto* name = new QLabel(label, this);
    name->setObjectName(QStringLiteral("infoLabel"));
    auto* text = new QLabel(value, this);
    text->setObjectName(QStringLiteral("infoValue"));
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    name->setBuddy(text);
    m_grid->addWidget(name, row, 0);
    m_grid->addWidget(text, row, 1);
}
