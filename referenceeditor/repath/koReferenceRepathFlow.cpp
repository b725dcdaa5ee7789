#include "koReferenceRepathFlow.h"

#include "RepathEntryList.h"
#include "koReferenceRePathDialogI.h"
#include "koReferenceRePathSummaryI.h"
#include "koRepathChoiceText.h"
#include "koRepathEngine.h"
#include "koRepathSearch.h"

#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>

#include <QMessageBox>

namespace {

// A name found in several folders may have been matched to the wrong one; the log lets
// the user check each such link after the fact.
void logAmbiguities(const QVector<RepathLink>& links, const QVector<RepathChoice>& choices)
{
    for (int i = 0; i < links.size(); ++i) {
        if (choices.at(i).isAmbiguous()) {
            koService<koLogService>()->logWarning(QStringLiteral("References"),
                                                  koRepathChoiceText::ambiguity(links.at(i), choices.at(i)));
        }
    }
}

} // namespace

bool koReferenceRepathFlow::run(QWidget* parent, const QList<kodReferenceNode>& nodes, bool sources, bool smarts)
{
    RepathProgress progress;
    return run(parent, nodes, sources, smarts, progress);
}

bool koReferenceRepathFlow::run(QWidget* parent, const QList<kodReferenceNode>& nodes, bool sources, bool smarts,
                                RepathProgress& progress)
{
    if (!sources && !smarts)
        return false;
    koReferenceRePathDialogI dialog(parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    const QString newPath = dialog.newPath();
    if (newPath.isEmpty())
        return false;

    // The scene is read here, on the GUI thread; only the disk is searched off it.
    const QVector<RepathLink> links = repathLinks(nodes, dialog.missingFilesOnly(), sources, smarts);
    QVector<RepathChoice> choices;
    if (!koRepathSearch::run(parent, links, newPath, dialog.searchSubdirectories(), progress, choices))
        return false;
    RepathEntryList found;
    RepathEntryList notFound;
    sortRepathEntries(found, notFound, links, choices, newPath);
    if (!notFound.isEmpty()) {
        if (nodes.size() == 1) {
            QMessageBox::warning(parent, tr("Repath"),
                                 tr("This reference name cannot be found in the selected directory. Please check the "
                                    "directory and try again."),
                                 QMessageBox::Ok);
            return false;
        }
        koReferenceRePathSummaryI summary(parent);
        summary.setList(failedPaths(notFound));
        summary.setMessage1(tr("%1 Filepaths successful").arg(found.size()));
        summary.setMessage2(tr("%1 Filepaths unsuccessful").arg(notFound.size()));
        if (summary.exec() != QDialog::Accepted)
            return false;
    }
    // OK in the summary repaths everything, the links not found to their names in the
    // new folder as well.
    const RepathMode mode = repathMode(sources, smarts);
    applyRepath(found, mode);
    applyRepath(notFound, mode);
    logAmbiguities(links, choices);
    return true;
}
