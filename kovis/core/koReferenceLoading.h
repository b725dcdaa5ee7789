#pragma once

#include "koReferenceContent.h"
#include "koSceneNodeDesc.h"

#include <kovis/koGlobal.h>

#include <QCoreApplication>
#include <QHash>
#include <QVector>

class koReferenceEngine;

// Loads, unloads and re-reads the content of references. Loading a loaded reference
// does nothing; whatever replaces content under the user's edits is one undo step; and
// content that exists only in memory is kept through an unload for the session.
class KOVIS_EXPORT koReferenceLoading
{
    Q_DECLARE_TR_FUNCTIONS(koReferenceLoading)

public:
    explicit koReferenceLoading(koReferenceEngine& engine);

    // The smart file if there is one, else the source.
    void load(quint64 id);
    bool loadSmart(quint64 id);
    // Reads the smart file again, over whatever the content holds now.
    bool reloadSmart(quint64 id);
    // Imports the source file, over whatever the content holds now.
    bool importSource(quint64 id);
    void unload(quint64 id);

    void park(quint64 shareKey, const QVector<koSceneNodeDesc>& content);
    const QVector<koSceneNodeDesc>* parkedContent(quint64 shareKey) const;
    void forgetParkedContent() { m_parked.clear(); }

    // Replaces the children of every instance of the reference.
    void replaceContent(quint64 id, const QVector<koSceneNodeDesc>& children);
    void clearContent(quint64 id);

private:
    bool readSmartFile(quint64 id, koReferenceContent links);
    bool restoreParked(quint64 id);
    bool isMemoryOnly(const koReferenceContent& links) const;
    QString nameOf(quint64 id) const;

    koReferenceEngine& m_engine;
    // Parked content stays after it is restored: undoing the load makes it current again.
    QHash<quint64, QVector<koSceneNodeDesc>> m_parked;
};
