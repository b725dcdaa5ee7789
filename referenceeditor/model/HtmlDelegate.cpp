#include "HtmlDelegate.h"

#include <QAbstractItemView>
#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QPainter>
#include <QTextDocument>

void HtmlDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const QVariant rich = index.data(RichTextRole);
    if (!rich.isValid()) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    const QString html = rich.toString();
    item.text.clear();
    QStyle* style = item.widget ? item.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);

    QTextDocument& document = documentFor(html, item.font);
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

QTextDocument& HtmlDelegate::documentFor(const QString& html, const QFont& font) const
{
    const QString key = font.key() + QLatin1Char('\n') + html;
    if (QTextDocument* known = m_documents.object(key))
        return *known;
    auto* document = new QTextDocument;
    document->setDefaultFont(font);
    document->setDocumentMargin(0);
    document->setHtml(html);
    m_documents.insert(key, document);
    return *document;
}

QSize HtmlDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const QVariant rich = index.data(RichTextRole);
    QSize size;
    if (rich.isValid()) {
        // Sizing columns asks for a thousand rows; the text's colours do not change its
        // width, so it is measured as plain text instead of laid out as a document.
        QStyleOptionViewItem item = option;
        initStyleOption(&item, index);
        item.text = plainText(rich.toString());
        const QWidget* widget = item.widget;
        QStyle* style = widget ? widget->style() : QApplication::style();
        size = style->sizeFromContents(QStyle::CT_ItemViewItem, &item, QSize(), widget);
    } else {
        size = QStyledItemDelegate::sizeHint(option, index);
    }
    if (m_rowHeight > 0)
        size.setHeight(m_rowHeight);
    return size;
}

void HtmlDelegate::setRowHeight(int height)
{
    if (height == m_rowHeight)
        return;
    m_rowHeight = height;
    emit sizeHintChanged(QModelIndex());
}

QSize HtmlDelegate::naturalSize(const QAbstractItemView* view, const QString& text, const QSize& iconSize)
{
    QStyleOptionViewItem option;
    option.initFrom(view);
    option.font = view->font();
    option.fontMetrics = QFontMetrics(option.font);
    option.features = QStyleOptionViewItem::HasDisplay;
    if (!iconSize.isEmpty()) {
        option.features |= QStyleOptionViewItem::HasDecoration;
        option.decorationSize = iconSize;
    }
    option.text = text;
    return view->style()->sizeFromContents(QStyle::CT_ItemViewItem, &option, QSize(), view);
}

// Our rich texts are plain text escaped by QString::toHtmlEscaped between tags.
QString HtmlDelegate::plainText(const QString& html)
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
    return text.replace(QLatin1String("&lt;"), QLatin1String("<"))
        .replace(QLatin1String("&gt;"), QLatin1String(">"))
        .replace(QLatin1String("&quot;"), QLatin1String("\""))
        .replace(QLatin1String("&amp;"), QLatin1String("&"));
}
