#include "koReferenceRepathFlow.h"

#include "RepathEntryList.h"
#include "koReferenceRePathDialogI.h"
#include "koReferenceRePathSummaryI.h"
#include "koRepathEngine.h"
#include "koRepathSearch.h"

#include <QMessageBox>

namespace {

RepathMode modeOf(bool sources, bool smarts)
{
    if (sources && smarts)
        return RepathMode::Both;
    return smarts ? RepathMode::SmartsOnly : RepathMode::SourcesOnly;
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
    QStringList targets;
    if (!koRepathSearch::run(parent, links, newPath, dialog.searchSubdirectories(), progress, targets))
        return false;
    RepathEntryList found;
    RepathEntryList notFound;
    sortRepathEntries(found, notFound, links, targets, newPath);
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
    const RepathMode mode = modeOf(sources, smarts);
    applyRepath(found, mode);
    applyRepath(notFound, mode);
    return true;
}
