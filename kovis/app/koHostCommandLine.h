#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

class QCommandLineParser;

// What kovis-host was asked to do.
class koHostCommandLine
{
    Q_DECLARE_TR_FUNCTIONS(koHostCommandLine)
public:
    enum class Mode { Window, ListReferences, Check, Repath };
    enum class Format { Text, Json };
    // The exit codes of the commands without a window.
    enum ExitCode { AllFound = 0, LinksMissing = 1, BadInput = 2 };

    // What --repath is to do.
    struct Repath
    {
        QString newDir;
        bool missingOnly = false;
        bool searchSubdirs = true;
        bool sources = true;
        bool smarts = true;
        bool write = false;
    };

    // Whether the arguments ask for a window (decided before any application exists).
    static bool wantsWindow(const QStringList& arguments);
    // Reads the arguments, the program's name first. False when they ask for help or make no
    // sense; answer() then has the text and the exit code.
    bool parse(const QStringList& arguments);
    // The help on standard output (exit 0) or what was wrong on standard error (exit 2).
    int answer() const;

    Mode mode = Mode::Window;
    Format format = Format::Text;
    QString project;
    QString screenshot;
    Repath repath;

private:
    bool checkCombination(const QCommandLineParser& parser);
    bool readMode(const QCommandLineParser& parser);
    bool fail(const QString& error);

    QString m_help;
    QString m_error;
};
