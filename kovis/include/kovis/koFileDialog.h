#pragma once

#include "koGlobal.h"

#include <QFileDialog>
#include <QPointer>
#include <QStringList>

#include <functional>

// The one way the host and its plug-ins ask for files. Each function takes the
// arguments of QFileDialog's static function of the same name and forwards to it,
// unless a handler is installed (tests script the answers through one).
class KOVIS_EXPORT koFileDialog
{
public:
    enum class Function { OpenFileName, OpenFileNames, SaveFileName, ExistingDirectory };

    struct Call
    {
        Function function;
        QPointer<QWidget> parent;
        QString caption;
        QString dir;
        QString filter;
        QFileDialog::Options options;
    };

    // Answers a call in place of the dialog: the chosen paths, none for Cancel.
    using Handler = std::function<QStringList(const Call&)>;

    static QString getOpenFileName(QWidget* parent = nullptr, const QString& caption = QString(),
                                   const QString& dir = QString(), const QString& filter = QString(),
                                   QString* selectedFilter = nullptr, QFileDialog::Options options = {});
    static QStringList getOpenFileNames(QWidget* parent = nullptr, const QString& caption = QString(),
                                        const QString& dir = QString(), const QString& filter = QString(),
                                        QString* selectedFilter = nullptr, QFileDialog::Options options = {});
    static QString getSaveFileName(QWidget* parent = nullptr, const QString& caption = QString(),
                                   const QString& dir = QString(), const QString& filter = QString(),
                                   QString* selectedFilter = nullptr, QFileDialog::Options options = {});
    static QString getExistingDirectory(QWidget* parent = nullptr, const QString& caption = QString(),
                                        const QString& dir = QString(),
                                        QFileDialog::Options options = QFileDialog::ShowDirsOnly);
    // Asks for a folder for a path field: starts in the folder typed there when it
    // exists, else where the dialog would start on its own.
    static QString getExistingDirectoryForField(QWidget* parent, const QString& caption, const QString& typed);

    // Installs the handler (an empty one brings the dialogs back) and returns the one
    // it replaces.
    static Handler setHandler(Handler handler);
};
