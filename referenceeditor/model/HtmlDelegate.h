#pragma once

#include <QCache>
#include <QStyledItemDelegate>
#include <QTextDocument>

class QAbstractItemView;

// Paints a cell from the rich text its model gives in RichTextRole, so that state
// labels show in their colours; cells without one are painted as plain text. Text that
// does not fit is cut with an ellipsis. Views that must stay level share one row height.
class HtmlDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    // The cell's text as rich text: user data in it is escaped, only our labels are markup.
    static constexpr int RichTextRole = Qt::UserRole + 1;

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // Every row this delegate sizes gets this height; 0 lets each row ask its style.
    void setRowHeight(int height);
    // What the view's style gives a cell showing the text in the view's font beside an
    // icon of the size (none when empty): the least size at which it shows whole.
    static QSize naturalSize(const QAbstractItemView* view, const QString& text, const QSize& iconSize);

private:
    static QString plainText(const QString& html);
    // Laid out once: a repaint of the three views draws the same few hundred cells.
    QTextDocument& documentFor(const QString& html, const QFont& font) const;

    int m_rowHeight = 0;
    mutable QCache<QString, QTextDocument> m_documents{256};
};
