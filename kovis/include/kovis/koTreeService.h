#pragma once

#include "koBaseService.h"
#include "kodNode.h"

#include <QByteArray>
#include <QList>

// The host's scene tree: its selection and the operations started from it.
// Without a window the selection is kept here; the host application shows it.
class KOVIS_EXPORT koTreeService : public koBaseService
{
    Q_OBJECT
public:
    using koBaseService::koBaseService;

    virtual void scrollToNode(unsigned id);
    virtual void refresh(bool full);
    virtual void clearSelection();
    // ids: qCompress()ed 32-bit node ids written one after the other with QDataStream.
    virtual void setSelection(const QByteArray& ids);
    virtual void showNodeInfo(const QList<kodNode>& nodes);
    // Copies each node with its subtree beside it; the copies share content with the
    // originals. Returns the copies.
    virtual QList<kodNode> cloneNodes(const QList<kodNode>& nodes);
    virtual QList<kodNode> getSelectedNodes() const;

    static QByteArray encodeSelection(const QList<kodNode>& nodes);
    static QList<quint32> decodeSelection(const QByteArray& ids);

signals:
    void selectionChanged();
    void scrollRequested(unsigned id);
    void refreshRequested(bool full);
    void nodeInfoRequested(const QList<kodNode>& nodes);

protected:
    void replaceSelection(const QList<kodNode>& nodes);

private:
    QList<kodNode> m_selection;
};
