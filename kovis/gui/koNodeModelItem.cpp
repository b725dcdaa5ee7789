#include <kovis/koKernelServiceFactory.h>
#include <kovis/koNodeModelItem.h>
#include <kovis/koPermissionService.h>
#include <kovis/koScopedMultiCommand.h>

#include "koItemId.h"

#include <QCoreApplication>
#include <QHash>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("koNodeModelItem", text);
}

bool isAncestorOrSelf(const kodNode& candidate, kodNode node)
{
    for (; !node.isNull(); node = node.getParent()) {
        if (node == candidate)
            return true;
    }
    return false;
}

} // namespace

koNodeModelItem::koNodeModelItem(const kodNode& node, koModelItem* parent)
    : koModelItem(parent)
    , m_nodeId(node.getObjectId())
{
    setEditable(0, true);
}

QVariant koNodeModelItem::getId() const
{
    return QVariant::fromValue(getNode());
}

QVariant koNodeModelItem::data(int column, int role) const
{
    if (role == Qt::UserRole)
        return QVariant::fromValue(getNode());
    if (column == 0 && (role == Qt::DisplayRole || role == Qt::EditRole))
        return getNode().getName();
    if (column == 0 && role == Qt::DecorationRole) {
        const kodNode node = getNode();
        return node.isValid() ? node.getIcon() : QVariant();
    }
    return koModelItem::data(column, role);
}

void koNodeModelItem::reload()
{
    // Nothing is kept outside an edit: the old rows go first, or a reload of a large
    // scene would hold two trees at once.
    if (!isEditing())
        setChildren({});
    QList<koModelItem*> children = createChildList();
    const QSet<koModelItem*> kept = isEditing() ? keepExistingChildren(children) : QSet<koModelItem*>();
    for (koModelItem* child : qAsConst(children)) {
        if (!kept.contains(child))
            child->reload();
    }
    setChildren(children);
}

QSet<koModelItem*> koNodeModelItem::keepExistingChildren(QList<koModelItem*>& fresh) const
{
    QHash<koItemId, koModelItem*> existing;
    existing.reserve(childCount());
    for (int row = 0; row < childCount(); ++row) {
        const koItemId key = koItemId::ofItem(*child(row));
        if (key.isValid() && !existing.contains(key))
            existing.insert(key, child(row));
    }
    QSet<koModelItem*> kept;
    for (koModelItem*& item : fresh) {
        if (koModelItem* existingItem = existing.take(koItemId::ofItem(*item))) {
            delete item;
            item = existingItem;
            kept.insert(item);
        }
    }
    return kept;
}

QList<koModelItem*> koNodeModelItem::createChildList()
{
    QList<koModelItem*> children;
    const QList<kodNode> nodes = getNode().getChildren();
    children.reserve(nodes.size());
    for (const kodNode& node : nodes) {
        if (koModelItem* child = loadChild(node))
            children.append(child);
    }
    return children;
}

koModelItem* koNodeModelItem::loadChild(const kodNode& node)
{
    return new koNodeModelItem(node, this);
}

bool koNodeModelItem::getDragEnabled() const
{
    const kodNode node = getNode();
    return node.isValid() && !node.isLocked() && !node.getParent().isNull();
}

bool koNodeModelItem::getDropEnabled() const
{
    const kodNode node = getNode();
    return node.isValid() && !node.isLocked();
}

bool koNodeModelItem::setEditData(int column, int role, const QVariant& value)
{
    if (!canSetData(column, role, value))
        return false;
    if (role == Qt::EditRole)
        return textChanged(column, value.toString());
    if (role == Qt::CheckStateRole)
        return checkStateChanged(column, Qt::CheckState(value.toInt()));
    return false;
}

bool koNodeModelItem::canSetData(int column, int role, const QVariant& value) const
{
    const auto* permissions = koKernelServiceFactory::the()->getServiceOrNull<koPermissionService>();
    const kodNode node = getNode();
    if (!node.isValid() || !permissions || !permissions->canEdit(node))
        return false;
    if (role == Qt::EditRole)
        return column == 0 && getEditable(column) && !value.toString().trimmed().isEmpty();
    return role == Qt::CheckStateRole && getCheckable(column);
}

bool koNodeModelItem::textChanged(int column, const QString& text)
{
    if (column != 0)
        return false;
    kodNode node = getNode();
    if (text != node.getName()) {
        const koScopedMultiCommand step(koUndoString("koNodeModelItem", tr("Rename %1").arg(node.getName())));
        node.setName(text);
    }
    return true;
}

bool koNodeModelItem::checkStateChanged(int column, Qt::CheckState state)
{
    setCheckState(column, state);
    return true;
}

bool koNodeModelItem::canDropTo(const QList<kodNode>& nodes) const
{
    if (!getDropEnabled())
        return false;
    const kodNode target = getNode();
    for (const kodNode& node : nodes) {
        if (!node.isValid() || node.isLocked() || node.getParent() == target || isAncestorOrSelf(node, target))
            return false;
    }
    return true;
}

bool koNodeModelItem::droppedFrom(const QList<kodNode>& nodes, Qt::DropAction action)
{
    if (action != Qt::MoveAction || !canDropTo(nodes))
        return false;
    const koScopedMultiCommand step(koUndoString("koNodeModelItem", tr("Move nodes")));
    kodNode target = getNode();
    bool moved = false;
    for (const kodNode& node : nodes) {
        target.addChild(node);
        moved = node.getParent() == target || moved;
    }
    return moved;
}
