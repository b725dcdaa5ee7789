#pragma once

#include <QStyledItemDelegate>

// Paints a cell's display text as rich text, so that state labels show in their
// colours; text that does not fit is cut with an ellipsis.
class HtmlDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    static bool isRichText(const QString& text);
    static QString withoutTags(const QString& html);
};
