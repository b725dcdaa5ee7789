#pragma once

#include "RepathChoice.h"
#include "RepathLink.h"
#include "RepathProgress.h"

#include <QCoreApplication>
#include <QVector>

class QWidget;

// Looks for the files of a repath off the GUI thread. A folder picked by mistake, a
// large tree or a slow share can take long: after half a second a progress dialog shows
// the folder being read and the files seen, and its Cancel stops the search.
class koRepathSearch
{
    Q_DECLARE_TR_FUNCTIONS(koRepathSearch)
public:
    // The choice for each link, as findRepathChoices gives them; false when the user
    // cancelled, and then the choices are not to be used.
    static bool run(QWidget* parent, const QVector<RepathLink>& links, const QString& newDir, bool searchSubdirs,
                    RepathProgress& progress, QVector<RepathChoice>& choices);
};
