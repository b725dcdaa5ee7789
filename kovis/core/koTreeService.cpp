#include <kovis/koTreeService.h>

#include "koHandleList.h"
#include "koReferenceEngine.h"
#include "koSceneOperations.h"

#include <kovis/koHost.h>

#include <QDataStream>

void koTreeService::scrollToNode(unsigned id)
{
    emit scrollRequested(id);
}

void koTreeService::refresh(bool full)
{
    emit refreshRequested(full);
}

void koTreeService::clearSelection()
{
    replaceSelection({});
}

void koTreeService::setSelection(const QByteArray& ids)
{
    QList<kodNode> nodes;
    for (quint32 id : decodeSelection(ids)) {
        const kodNode node(id);
        if (node.isValid() && !nodes.contains(node))
            nodes.append(node);
    }
    replaceSelection(nodes);
}

void koTreeService::showNodeInfo(const QList<kodNode>& nodes)
{
    emit nodeInfoRequested(nodes);
}

QList<kodNode> koTreeService::cloneNodes(const QList<kodNode>& nodes)
{
    QVector<quint64> ids;
    for (const kodNode& node : nodes)
        ids.append(node.getObjectId());
    return koHandleList<kodNode>(koHost::engine()->operations().cloneNodes(ids));
}

QList<kodNode> koTreeService::getSelectedNodes() const
{
    QList<kodNode> valid;
    for (const kodNode& node : m_selection) {
        if (node.isValid())
            valid.append(node);
    }
    return valid;
}

QByteArray koTreeService::encodeSelection(const QList<kodNode>& nodes)
{
    QByteArray ids;
    QDataStream stream(&ids, QIODevice::WriteOnly);
    for (const kodNode& node : nodes)
        stream << quint32(node.getObjectId());
    return qCompress(ids, 1);
}

QList<quint32> koTreeService::decodeSelection(const QByteArray& ids)
{
    const QByteArray data = qUncompress(ids);
    QDataStream stream(data);
    QList<quint32> result;
    while (data.size() - stream.device()->pos() >= qint64(sizeof(quint32))) {
        quint32 id = 0;
        stream >> id;
        result.append(id);
    }
    return result;
}

void koTreeService::replaceSelection(const QList<kodNode>& nodes)
{
    if (nodes == m_selection)
        return;
    m_selection = nodes;
    emit selectionChanged();
}
