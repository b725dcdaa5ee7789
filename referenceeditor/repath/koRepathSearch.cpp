#include "koRepathSearch.h"

#include "koRepathEngine.h"

#include <kovis/koQRPCUtils.h>

#include <QProgressDialog>
#include <QTimer>

namespace {

constexpr int showAfterMs = 500;
constexpr int reportEveryMs = 100;

} // namespace

bool koRepathSearch::run(QWidget* parent, const QVector<RepathLink>& links, const QString& newDir,
                         bool searchSubdirs, RepathProgress& progress, QVector<RepathChoice>& choices)
{
    QProgressDialog dialog(tr("Looking for the files..."), tr("Cancel"), 0, 0, parent);
    dialog.setWindowTitle(tr("Repath"));
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setMinimumDuration(showAfterMs);
    // Starts the clock of the minimum duration.
    dialog.setValue(0);
    QObject::connect(&dialog, &QProgressDialog::canceled, [&progress] { progress.cancel(); });
    QTimer report;
    QObject::connect(&report, &QTimer::timeout, &dialog, [&dialog, &progress] {
        dialog.setLabelText(tr("Reading %1\n%n file(s) seen", nullptr, progress.files()).arg(progress.folder()));
    });
    report.start(reportEveryMs);
    koQRPCUtils::the()->callOffGuiThread(
        [&] { choices = findRepathChoices(links, newDir, searchSubdirs, &progress); });
    return !progress.isCancelled();
}
