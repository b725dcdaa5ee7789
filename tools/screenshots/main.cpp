#include "koHostSession.h"
#include "koPreferencesDialog.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDockWidget>
#include <QListWidget>
#include <QSlider>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

// Writes the pictures of docs/: kovis-host on the demo project with the Reference
// Editor showing every reference, as a graph and as a list, and the preferences page.
namespace {

void settle()
{
    for (int turn = 0; turn < 5; ++turn)
        QCoreApplication::processEvents();
}

bool save(QWidget& widget, const QString& folder, const QString& name)
{
    settle();
    const QString path = QDir(folder).filePath(name);
    const bool saved = widget.grab().save(path, "PNG");
    std::printf("%s %s\n", saved ? "wrote" : "could not write", qPrintable(path));
    return saved;
}

QWidget* referenceEditor(QWidget& window)
{
    return window.findChild<QWidget*>(QStringLiteral("koReferenceEditorUI"));
}

bool showPreferences(QWidget& window, const QString& folder)
{
    koPreferencesDialog dialog(&window);
    auto* categories = dialog.findChild<QListWidget*>(QStringLiteral("PreferencesCategories"));
    const QList<QListWidgetItem*> references = categories->findItems(QStringLiteral("References"), Qt::MatchExactly);
    if (references.isEmpty())
        return true;
    categories->setCurrentItem(references.first());
    dialog.show();
    return save(dialog, folder, QStringLiteral("preferences.png"));
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const QString folder = application.arguments().value(1, QStringLiteral(KOVIS_DOCS_DIR));
    QTemporaryDir settings;
    bool saved = true;
    {
        koHostSession session(settings.filePath(QStringLiteral("kovis.ini")));
        session.loadPlugins(QStringLiteral(KOVIS_PLUGIN_DIR));
        koMainWindow& window = session.window();
        window.resize(1500, 900);
        window.openProject(QStringLiteral(KOVIS_DEMO_PROJECT));
        window.show();
        settle();
        if (auto* dock = window.findChild<QDockWidget*>(QStringLiteral("Reference Editor")))
            window.resizeDocks({dock}, {window.height() / 2}, Qt::Vertical);
        QWidget* editor = referenceEditor(window);
        if (!editor) {
            std::fprintf(stderr, "The Reference Editor plug-in was not loaded from %s\n", KOVIS_PLUGIN_DIR);
            return 1;
        }
        auto* depth = editor->findChild<QSlider*>(QStringLiteral("m_treeSlider"));
        depth->setValue(depth->maximum());
        saved = save(window, folder, QStringLiteral("kovis-host.png")) && saved;
        editor->findChild<QComboBox*>(QStringLiteral("m_listMode"))->setCurrentIndex(1);
        saved = save(*editor, folder, QStringLiteral("reference-list.png")) && saved;
        saved = showPreferences(window, folder) && saved;
    }
    return saved ? 0 : 1;
}
