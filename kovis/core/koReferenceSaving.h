#pragma once

#include "koReferenceEngine.h"

#include <kovis/koGlobal.h>

#include <QCoreApplication>
#include <QString>

// Writes references to their smart files. A save writes the new and changed
// sub-references too, so that no link ever points at a file that was never written.
class KOVIS_EXPORT koReferenceSaving
{
    Q_DECLARE_TR_FUNCTIONS(koReferenceSaving)

public:
    explicit koReferenceSaving(koReferenceEngine& engine);

    bool save(quint64 id);
    bool saveAs(quint64 id, const QString& path, bool withSubReferences);
    bool saveProject(const QString& path, const koReferenceEngine::SmartPathsRequest& askForSmartPaths);
    // Gives every new smart reference below the node a file as the host places them:
    // the custom folder of the preferences, else beside the source, else beside the
    // project; never onto reservedPath or a file that exists.
    void placeNewSmartFiles(quint64 id, const QString& reservedPath);

private:
    bool hasNewSmartReferencesBelow(quint64 id) const;
    bool saveChangedSubReferences(quint64 id);
    bool needsWriting(quint64 id) const;
    bool writeFile(quint64 id, const QString& path);
    void finishSave(quint64 id);

    koReferenceEngine& m_engine;
};
