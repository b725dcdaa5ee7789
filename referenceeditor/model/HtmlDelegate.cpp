#include "HtmlDelegate.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QPainter>
#include <QTextDocument>

namespace {

void prepareDocument(QTextDocument& document, const QStyleOptionViewItem& option, const QString& html)
{
    document.setDefaultFont(option.font);
    document.setDocumentMargin(0);
    document.setHtml(html);
}

} // namespace

bool HtmlDelegate::isRichText(const QString& text)
{
    return text.contains(QLatin1Char('<'));
}

void HtmlDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    if (!isRichText(item.text)) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    const QString html = item.text;
    item.text.clear();
    QStyle* style = item.widget ? item.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);

    QTextDocument document;
    prepareDocument(document, item, html);
    const QRect textRect = style->subElementRect(QStyle::SE_ItemViewItemText, &item, item.widget);
    const int top = textRect.top() + qMax(0, (textRect.height() - int(document.size().height())) / 2);
    const bool selected = item.state & QStyle::State_Selected;
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = item.palette;
    context.palette.setColor(QPalette::Text, item.palette.color(QPalette::Active,
                                                               selected ? QPalette::HighlightedText : QPalette::Text));
    const QString ellipsis = QStringLiteral("\u2026");
    const int ellipsisWidth = item.fontMetrics.horizontalAdvance(ellipsis);
    const bool fits = document.idealWidth() <= textRect.width();
    const int visibleWidth = fits ? textRect.width() : qMax(0, textRect.width() - ellipsisWidth);

    painter->save();
    painter->translate(textRect.left(), top);
    const QRect clip(0, 0, visibleWidth, textRect.height());
    painter->setClipRect(clip);
    context.clip = clip;
    document.documentLayout()->draw(painter, context);
    painter->restore();
    if (!fits) {
        painter->save();
        painter->setPen(context.palette.color(QPalette::Text));
        painter->setFont(item.font);
        painter->drawText(QRect(textRect.left() + visibleWidth, textRect.top(), ellipsisWidth, textRect.height()),
                          Qt::AlignLeft | Qt::AlignVCenter, ellipsis);
        painter->restore();
    }
}

QSize HtmlDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    if (!isRichText(item.text))
        return QStyledItemDelegate::sizeHint(option, index);
    // Sizing columns asks for a thousand rows; the text's colours do not change its
    // width, so it is measured without its tags instead of laid out as a document.
    item.text = withoutTags(item.text);
    return QStyledItemDelegate::sizeHint(item, index);
}

QString HtmlDelegate::withoutTags(const QString& html)
{
    QString text;
    text.reserve(html.size());
    bool inTag = false;
    for (const QChar character : html) {
        if (character == QLatin1Char('<'))
            inTag = true;
        else if (character == QLatin1Char('>'))
            inTag = false;
        else if (!inTag)
            text.append(character);
    }
    return text;
}
