#pragma once

#include <kovis/kodReferenceNode.h>

#include <QAction>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QTemporaryDir>

class koPreferencesService;

// Brings the host up once per test process, with preferences in a temporary file, and
// gives each test a fresh empty scene and a temporary folder for its files.
class koTestHost
{
public:
    koTestHost();
    ~koTestHost();

    QString path(const QString& relative) const;
    QString writeFile(const QString& relative, const QByteArray& content) const;
    // The path relative to the folder, "-" for none.
    QString relative(const QString& path) const;
    // A project file whose root group holds the nodes.
    static QByteArray projectDocument(const QString& rootName, const QJsonArray& nodes);
    static QByteArray readFile(const QString& path);
    // Writes a project file whose root group holds the nodes.
    QString writeProject(const QString& relative, const QJsonArray& nodes, const QString& name = QString()) const;
    // Opens a project ("project.kpr") holding only this reference; returns its node.
    kodReferenceNode loadSingleReference(const QJsonObject& reference) const;
    // Stores the value through the setter of its type (bool, int or text).
    static void storePreference(koPreferencesService& preferences, const QString& key, const QVariant& value,
                                bool markChanged);
    // Sets the file's modification time (and with it what the host sees on disk).
    static void setModified(const QString& path, const QDateTime& time);

    // Node objects of a project file.
    static QJsonObject group(const QString& name, const QJsonArray& children = {});
    static QJsonObject geometry(const QString& name);
    static QJsonObject reference(const QString& name, const QString& smart, const QString& source,
                                 const QJsonObject& extra = {});

    // The scene as the project file would store it, to compare scenes.
    static QByteArray sceneSnapshot();
    // The first node of the scene with this name, its root included, depth first; null if none.
    static kodNode findNode(const QString& name);
    static kodReferenceNode findReference(const QString& name);
    static QList<kodReferenceNode> findReferences(const QStringList& names);
    // The action at a menu path such as "Edit/Clone" among the actions; null if none.
    static QAction* findAction(const QList<QAction*>& actions, const QString& path);
    // The host's log, an entry a line: "Warning References: message".
    static QStringList logLines();
    // Lets the work that the window defers to the event loop (reloads, selections) run.
    static void settle();

private:
    QTemporaryDir m_dir;
};
