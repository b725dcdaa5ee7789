#include <kovis/QKOScrollableMessageBox.h>

#include <QGridLayout>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>

QKOScrollableMessageBox::QKOScrollableMessageBox(QWidget* parent)
    : QMessageBox(parent)
{
}

QKOScrollableMessageBox::QKOScrollableMessageBox(Icon icon, const QString& title, const QString& text,
                                                 StandardButtons buttons, QWidget* parent)
    : QMessageBox(icon, title, text, buttons, parent)
{
}

void QKOScrollableMessageBox::makeScrollable()
{
    auto* grid = qobject_cast<QGridLayout*>(layout());
    auto* original = findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    if (m_scrollArea || !grid || !original)
        return;

    // The box sizes its own label on every layout pass; a label of ours in the scroll
    // area keeps its wrapping, and the box's label stays hidden.
    m_scrollArea = new QScrollArea(this);
    m_scrollArea->setObjectName(QStringLiteral("scrollArea"));
    m_scrollArea->setFrameShape(QFrame::NoFrame);
    m_scrollArea->setWidgetResizable(true);
    m_scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* label = new QLabel(text(), m_scrollArea);
    label->setObjectName(QStringLiteral("scrollableText"));
    label->setTextFormat(textFormat());
    label->setWordWrap(true);
    label->setTextInteractionFlags(original->textInteractionFlags());
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    m_scrollArea->setWidget(label);

    int row = 0, column = 0, rowSpan = 0, columnSpan = 0;
    grid->getItemPosition(grid->indexOf(original), &row, &column, &rowSpan, &columnSpan);
    original->hide();
    grid->addWidget(m_scrollArea, row, column, rowSpan, columnSpan);

    const QRect available = screen()->availableGeometry();
    const int width = qBound(300, fontMetrics().averageCharWidth() * 80, available.width() / 2);
    const int height = qMin(label->heightForWidth(width), available.height() / 2);
    m_scrollArea->setMinimumSize(width + style()->pixelMetric(QStyle::PM_ScrollBarExtent), height);
}
