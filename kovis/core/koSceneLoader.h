#pragma once

#include "koSceneNodeDesc.h"

#include <kovis/koGlobal.h>

#include <QStringList>

#include <functional>

// Reads the content of smart and source files, and with it the content of the
// references they hold, as the sub-reference load mode says. A reference whose file
// cannot be read (missing, corrupt, including itself) stays unloaded; why is reported.
class KOVIS_EXPORT koSceneLoader
{
public:
    enum LoadMode { LoadSceneReferences = 0, AlwaysLoad = 1, NeverLoad = 2, AvoidLeafReferences = 3 };

    koSceneLoader(int loadMode, std::function<void(const QString&)> warn);

    static constexpr qint64 maxSourceSize = qint64(2) * 1024 * 1024 * 1024;

    static bool isSmartFile(const QString& path);
    static bool isGeometryFile(const QString& path);

    // The content of a smart file (.kpr or .osb) as a group whose children are the content.
    bool readSmartFile(const QString& path, koSceneNodeDesc& content, QString* error);
    // The content imported from a source file.
    static bool importSource(const QString& path, koSceneNodeDesc& content, QString* error);
    // Resolves the references inside content read from the file at path.
    void resolveReferences(koSceneNodeDesc& content, const QString& path);

private:
    void resolveChildren(koSceneNodeDesc& node);
    void resolveReference(koSceneNodeDesc& reference);
    bool shouldLoad(const koSceneNodeDesc& reference) const;
    void loadSmartContent(koSceneNodeDesc& reference);
    void tagInstances(koSceneNodeDesc& node, const QString& prefix) const;

    int m_loadMode;
    std::function<void(const QString&)> m_warn;
    QStringList m_openFiles;
    int m_filesRead = 0;
};
