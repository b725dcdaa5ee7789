#pragma once

#include <kovis/kodReferenceNode.h>

#include <QCoreApplication>
#include <QList>

class QWidget;
class RepathProgress;

// Repaths references: asks for the new folder, looks for the files, shows what was
// not found, and re-points the links. Nothing of it is undoable.
class koReferenceRepathFlow
{
    Q_DECLARE_TR_FUNCTIONS(koReferenceRepathFlow)
public:
    // Returns whether links were set (possibly none, when nothing was to be looked for);
    // false when the user stopped the flow or it changed nothing on purpose.
    static bool run(QWidget* parent, const QList<kodReferenceNode>& nodes, bool sources, bool smarts);
    // The same, reporting the file search to this progress.
    static bool run(QWidget* parent, const QList<kodReferenceNode>& nodes, bool sources, bool smarts,
                    RepathProgress& progress);
};
