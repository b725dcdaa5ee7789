#include <kovis/QKOCollapsibleFrame.h>

#include <QChildEvent>
#include <QToolButton>
#include <QVBoxLayout>

QKOCollapsibleFrame::QKOCollapsibleFrame(QWidget* parent)
    : QFrame(parent)
    , m_layout(new QVBoxLayout(this))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(2);
    auto* header = new QToolButton(this);
    header->setObjectName(QStringLiteral("collapsibleFrameHeader"));
    header->setCheckable(true);
    header->setChecked(true);
    header->setAutoRaise(true);
    header->setArrowType(Qt::DownArrow);
    header->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    header->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    QFont bold = header->font();
    bold.setBold(true);
    header->setFont(bold);
    m_layout->addWidget(header);
    m_header = header;
    connect(m_header, &QToolButton::toggled, this, [this](bool expanded) { setCollapsed(!expanded); });
}

void QKOCollapsibleFrame::addPage(QWidget* page)
{
    if (!page || m_pages.contains(page))
        return;
    m_pages.append(page);
    m_layout->addWidget(page);
    if (isCollapsed())
        page->hide();
}

QList<QWidget*> QKOCollapsibleFrame::pages() const
{
    return m_pages;
}

void QKOCollapsibleFrame::setCaption(const QString& caption)
{
    m_header->setText(caption);
}

QString QKOCollapsibleFrame::getCaption() const
{
    return m_header->text();
}

void QKOCollapsibleFrame::setCollapsed(bool collapsed)
{
    if (collapsed == m_collapsed)
        return;
    m_collapsed = collapsed;
    m_header->setChecked(!collapsed);
    m_header->setArrowType(collapsed ? Qt::RightArrow : Qt::DownArrow);
    for (QWidget* page : qAsConst(m_pages))
        page->setVisible(!collapsed);
    emit collapsedChanged(collapsed);
}

bool QKOCollapsibleFrame::isCollapsed() const
{
    return m_collapsed;
}

void QKOCollapsibleFrame::childEvent(QChildEvent* event)
{
    QFrame::childEvent(event);
    QObject* child = event->child();
    if (event->removed()) {
        // The child may be half destroyed: compare, never cast.
        const auto page = std::find_if(m_pages.begin(), m_pages.end(), [child](QObject* p) { return p == child; });
        if (page != m_pages.end())
            m_pages.erase(page);
        return;
    }
    // The header arrives while the frame is being built; it is no page.
    if (!event->added() || !m_header || !child->isWidgetType() || child == m_header)
        return;
    auto* widget = static_cast<QWidget*>(child);
    if (!widget->isWindow())
        addPage(widget);
}
