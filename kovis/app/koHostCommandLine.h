#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

// What kovis-host was asked to do.
class koHostCommandLine
{
    Q_DECLARE_TR_FUNCTIONS(koHostCommandLine)
public:
    enum class Mode { Window, ListReferences, Check };

    // Whether the arguments ask for a window (decided before any application exists).
    static bool wantsWindow(const QStringList& arguments);
    // Parses the application's arguments; --help and errors end the process.
    void parse(const QCoreApplication& application);

    Mode mode = Mode::Window;
    QString project;
    QString screenshot;
};
