#pragma once

#include "koReferenceContent.h"

#include <kovis/koGlobal.h>
#include <kovis/koReferenceTypes.h>

#include <QCoreApplication>
#include <QStringList>

class koReferenceEngine;

// Edits the smart and source links of references. Each edit is one undo step and
// counts against the reference whose file stores the link.
class KOVIS_EXPORT koReferenceLinks
{
    Q_DECLARE_TR_FUNCTIONS(koReferenceLinks)

public:
    explicit koReferenceLinks(koReferenceEngine& engine);

    void createSmartLink(quint64 id);
    void createSourceLink(quint64 id);
    void removeSmartLink(quint64 id);
    void removeSourceLink(quint64 id);
    void setSmartPath(quint64 id, const QString& path);
    void setSourcePath(quint64 id, const QString& path);

    // Where a new smart file of the reference would go.
    QString proposeSmartPath(quint64 id, koReferenceTypes::ExportLocation location, const QString& customFolder) const;
    QStringList fileExtensions() const;

    static QString cleanPath(const QString& path);

private:
    enum class Link { Smart, Source };
    void setLinkPath(quint64 id, const QString& path, Link link);

    koReferenceEngine& m_engine;
};
