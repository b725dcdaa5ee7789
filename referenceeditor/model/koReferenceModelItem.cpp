#include "koReferenceModelItem.h"

#include "HtmlDelegate.h"
#include "koReferenceStateText.h"
#include "koReferenceTreeModel.h"
#include "koTextMatcher.h"

#include <kovis/koFileStateText.h>

#include <QDir>

koReferenceModelItem::koReferenceModelItem(const kodNode& node, bool nested, koModelItem* parent)
    : koNodeModelItem(node, parent)
    , m_nested(nested)
{
}

QVariant koReferenceModelItem::data(int column, int role) const
{
    if (role == HtmlDelegate::RichTextRole)
        return richText(column);
    if (column == NameColumn || role != Qt::DisplayRole || column >= ColumnCount)
        return koNodeModelItem::data(column, role);
    return cachedText(column);
}

void koReferenceModelItem::reload()
{
    m_textKnown.reset();
    koNodeModelItem::reload();
}

const QString& koReferenceModelItem::text(int column) const
{
    static const QString none;
    return column >= 0 && column < ColumnCount ? cachedText(column) : none;
}

void koReferenceModelItem::makeSearchTexts() const
{
    static const std::bitset<ColumnCount> searched = [] {
        std::bitset<ColumnCount> columns;
        for (int column : searchColumns)
            columns.set(std::size_t(column));
        return columns;
    }();
    if ((m_textKnown & searched) == searched)
        return;
    for (int column : searchColumns)
        cachedText(column);
}

bool koReferenceModelItem::matches(const koTextMatcher& search) const
{
    for (int column : searchColumns) {
        if (search.matches(cachedText(column)))
            return true;
    }
    return false;
}

QVariant koReferenceModelItem::richText(int column) const
{
    switch (column) {
    case NameColumn:
        return koReferenceTreeModel::richText(kodReferenceNode(getNode().getObjectId()));
    case SmartStatusColumn:
    case SourceStatusColumn:
        // Our own words in their colours: no user data to escape.
        return cachedText(column);
    default:
        return QVariant();
    }
}

const QString& koReferenceModelItem::cachedText(int column) const
{
    if (!m_textKnown.test(std::size_t(column))) {
        const kodReferenceNode reference(getNode().getObjectId());
        QString& text = m_texts[std::size_t(column)];
        if (column == NameColumn) {
            text = koReferenceTreeModel::displayText(reference);
            // Built piece by piece, with room to grow that a kept text never uses. Other
            // columns mostly share their text with the scene, which squeezing would copy.
            text.squeeze();
        } else {
            text = columnText(column, reference);
        }
        m_textKnown.set(std::size_t(column));
    }
    return m_texts[std::size_t(column)];
}

QString koReferenceModelItem::columnText(int column, const kodReferenceNode& reference) const
{
    switch (column) {
    case InstancesColumn:
        return QString::number(reference.getRefCount());
    case SmartStatusColumn:
        return koReferenceStateText::colored(koFileStateText::state(reference.getSmartFileState(), QString()),
                                             reference.getSmartFileState(), reference);
    case SmartModifiedColumn:
        return reference.hasSmartReference() ? koFileStateText::date(reference.getSmartLastModified()) : QString();
    case SmartOwnerColumn:
        return reference.getSmartOwner();
    case SmartLocationColumn:
        return QDir::toNativeSeparators(reference.getSmartPath());
    case SourceStatusColumn:
        return koReferenceStateText::colored(koFileStateText::state(reference.getSourceFileState(), QString()),
                                             reference.getSourceFileState(), reference);
    case SourceModifiedColumn:
        return reference.hasSourceReference() ? koFileStateText::date(reference.getSourceLastModified()) : QString();
    case SourceOwnerColumn:
        return reference.getSourceOwner();
    case SourceLocationColumn:
        return QDir::toNativeSeparators(reference.getSourcePath());
    default:
        return QString();
    }
}

QList<koModelItem*> koReferenceModelItem::createChildList()
{
    QList<koModelItem*> children;
    if (!m_nested)
        return children;
    for (const kodNode& node : referencesBelow(getNode()))
        children.append(new koReferenceModelItem(node, true, this));
    return children;
}

QList<kodNode> koReferenceModelItem::referencesBelow(const kodNode& node)
{
    // By id: every reload walks the whole scene, and a handle per node costs more than the walk.
    QList<kodNode> references;
    QVector<quint64> pending;
    const auto pushChildren = [&pending](const kodNode& parent) {
        const QVector<quint64> children = parent.getChildIds();
        for (auto child = children.crbegin(); child != children.crend(); ++child)
            pending.append(*child);
    };
    pushChildren(node);
    while (!pending.isEmpty()) {
        const kodNode next(pending.takeLast());
        if (next.isTypeOf(kodReferenceNode::staticMetaObject))
            references.append(next);
        else
            pushChildren(next);
    }
    return references;
}
