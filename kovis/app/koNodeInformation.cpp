#include "koNodeInformation.h"

#include "koSceneStore.h"

#include <kovis/koFileStateText.h>
#include <kovis/koNodeInfoDialog.h>
#include <kovis/kodReferenceNode.h>

#include <QDir>
#include <QLocale>
#include <QPair>

namespace {

void describeFile(koNodeInfoDialog& dialog, const QString& kind, const QString& path, koReferenceTypes::FileState state,
                  const QDateTime& modified, const QString& owner)
{
    dialog.addInfo(kind, path.isEmpty() ? koNodeInformation::tr("None") : QDir::toNativeSeparators(path));
    dialog.addInfo(koNodeInformation::tr("State"), koFileStateText::state(state, koNodeInformation::tr("None")));
    dialog.addInfo(koNodeInformation::tr("Modified"), koFileStateText::date(modified));
    dialog.addInfo(koNodeInformation::tr("Owner"), owner);
}

// Vertices and faces of the node's geometry and everything below it, as imported.
QPair<quint64, quint64> geometryCounts(quint64 id)
{
    QPair<quint64, quint64> counts{0, 0};
    for (const koNodeRecord& record : koSceneStore::the()->subtree(id)) {
        counts.first += record.vertexCount;
        counts.second += record.faceCount;
    }
    return counts;
}

} // namespace

QString koNodeInformation::scenePath(const kodNode& node)
{
    QStringList names;
    for (kodNode current = node; current.isValid(); current = current.getParent())
        names.prepend(current.getName());
    return names.join(QLatin1Char('/'));
}

void koNodeInformation::describe(const kodNode& node, koNodeInfoDialog& dialog)
{
    if (!node.isValid())
        return;
    dialog.addSection(node.getName());
    dialog.addInfo(tr("Place"), scenePath(node.getParent()));
    dialog.addInfo(tr("Children"), QString::number(node.getChildCount()));
    dialog.addInfo(tr("Visible"), node.isVisible() ? tr("Yes") : tr("No"));
    dialog.addInfo(tr("Locked"), node.isLocked() ? tr("Yes") : tr("No"));
    dialog.addInfo(tr("Instances"), QString::number(node.getRefCount()));
    const QPair<quint64, quint64> counts = geometryCounts(node.getObjectId());
    dialog.addInfo(tr("Vertices"), QLocale().toString(counts.first));
    dialog.addInfo(tr("Faces"), QLocale().toString(counts.second));
    if (!node.isTypeOf(kodReferenceNode::staticMetaObject))
        return;
    const kodReferenceNode reference(node.getObjectId());
    dialog.addInfo(tr("Loaded"), reference.isLoaded() ? tr("Yes") : tr("No"));
    dialog.addInfo(tr("Changed"), reference.isSelfOrSubReferenceChanged() ? tr("Yes") : tr("No"));
    describeFile(dialog, tr("Smart file"), reference.getSmartPath(), reference.getSmartFileState(),
                 reference.getSmartLastModified(), reference.getSmartOwner());
    describeFile(dialog, tr("Source file"), reference.getSourcePath(), reference.getSourceFileState(),
                 reference.getSourceLastModified(), reference.getSourceOwner());
    dialog.addInfo(tr("Imported"), koFileStateText::date(reference.getSourceImportDate()));
}
