#include "koReferenceTreeModel.h"

#include "koReferenceModelItem.h"
#include "koReferenceStateText.h"

#include <kovis/koNodeModelItem.h>
#include <kovis/koStyle.h>

#include <typeinfo>

namespace {

// The file's suffix when the file is named after the node, else its name.
QString fileLabel(const QString& path, const QString& nodeName)
{
    if (path.isEmpty())
        return QString();
    const QString fileName = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    const int dot = fileName.lastIndexOf(QLatin1Char('.'));
    const QString completeBaseName = dot < 0 ? fileName : fileName.left(dot);
    const QString suffix = dot < 0 ? QString() : fileName.mid(dot + 1);
    return completeBaseName == nodeName ? suffix : fileName;
}

} // namespace

koReferenceTreeModel::koReferenceTreeModel(QObject* parent)
    : koItemModel(parent)
{
}

koReferenceTreeModel::~koReferenceTreeModel() = default;

kodReferenceNode koReferenceTreeModel::referenceOf(const koModelItem* item)
{
    const auto* nodeItem = dynamic_cast<const koNodeModelItem*>(item);
    if (!nodeItem)
        return kodReferenceNode();
    const kodNode node = nodeItem->getNode();
    return node.isTypeOf(kodReferenceNode::staticMetaObject) ? kodReferenceNode(node.getObjectId()) : kodReferenceNode();
}

const koReferenceModelItem* koReferenceTreeModel::referenceItem(int row, const QModelIndex& parent) const
{
    koModelItem* parentItem = getRootItem();
    if (parent.isValid() && (parent.column() != 0 || !tryGetItem(parent, parentItem)))
        return nullptr;
    return parentItem ? referenceItemOf(parentItem->child(row)) : nullptr;
}

const koReferenceModelItem* koReferenceTreeModel::referenceItemOf(const koModelItem* item)
{
    // The class is final: comparing the type costs less than a dynamic_cast, which a
    // search would pay for every row of the scene.
    return item && typeid(*item) == typeid(koReferenceModelItem) ? static_cast<const koReferenceModelItem*>(item)
                                                                  : nullptr;
}

QVariant koReferenceTreeModel::data(const QModelIndex& index, int role) const
{
    if (index.column() != 0 || (role != Qt::DisplayRole && role != Qt::ForegroundRole))
        return koItemModel::data(index, role);
    koModelItem* item = nullptr;
    if (!tryGetItem(index, item) || !item)
        return QVariant();
    if (role == Qt::DisplayRole) {
        if (const auto* reference = dynamic_cast<const koReferenceModelItem*>(item))
            return reference->text(0);
        return displayText(referenceOf(item));
    }
    const kodReferenceNode reference = referenceOf(item);
    if (!reference.isNull()) {
        if (reference.isLocked())
            return koStyle::getLockedItemColor();
        if (!reference.isVisible())
            return koStyle::getInactiveNodeColor();
    }
    return koItemModel::data(index, role);
}

QStringList koReferenceTreeModel::columnTitles()
{
    return {tr("References"), tr("#"),     tr("Status"), tr("Modified"), tr("Owner"),
            tr("Location"),   tr("Status"), tr("Modified"), tr("Owner"),  tr("Location")};
}

QString koReferenceTreeModel::displayText(const kodReferenceNode& reference)
{
    return labelledName(reference, [](const QString& text) { return text; });
}

QString koReferenceTreeModel::richText(const kodReferenceNode& reference)
{
    return labelledName(reference, [](const QString& text) { return text.toHtmlEscaped(); });
}

QString koReferenceTreeModel::labelledName(const kodReferenceNode& reference,
                                           const std::function<QString(const QString&)>& escape)
{
    if (reference.isNull())
        return QString();
    const QString name = reference.getName();
    if (!reference.hasSourceReference() && !reference.hasSmartReference())
        return escape(name);
    const QString smartPath = reference.getSmartPath();
    const QString sourcePath = reference.getSourcePath();
    if (smartPath.isEmpty() && sourcePath.isEmpty())
        return escape(name);
    const QString smartLabel = fileLabel(smartPath, name);
    const QString sourceLabel = fileLabel(sourcePath, name);
    QString text = escape(reference.isChanged() ? QLatin1Char('*') + name : name);
    text += QLatin1String(" [");
    if (!smartLabel.isEmpty()) {
        text += koReferenceStateText::colored(escape(smartLabel), reference.getSmartFileState(), reference);
        if (!sourceLabel.isEmpty())
            text += QLatin1String(" | ");
    }
    if (!sourceLabel.isEmpty())
        text += koReferenceStateText::colored(escape(sourceLabel), reference.getSourceFileState(), reference);
    return text + QLatin1Char(']');
}
