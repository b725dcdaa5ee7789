#include <kovis/QKOSearchBox.h>
#include <kovis/koIconManager.h>

#include <QWidgetAction>

QKOSearchBox::QKOSearchBox(QWidget* parent)
    : QLineEdit(parent)
{
    connect(this, &QLineEdit::textChanged, this, &QKOSearchBox::searchChanged);
}

void QKOSearchBox::addWidget(QWidget* widget)
{
    auto* action = new QWidgetAction(this);
    action->setDefaultWidget(widget);
    addAction(action, QLineEdit::TrailingPosition);
}

void QKOSearchBox::setSearchLineStyle(bool searchLine)
{
    if (searchLine && !m_searchIcon)
        m_searchIcon = addAction(koIconManager::getIcon(QStringLiteral("Search")), QLineEdit::LeadingPosition);
    if (m_searchIcon)
        m_searchIcon->setVisible(searchLine);
    setPlaceholderText(searchLine ? tr("Search") : QString());
    setClearButtonEnabled(searchLine);
}
