#include "koReferenceJson.h"

#include "koNodeInformation.h"

#include <QDir>

namespace {

QJsonValue date(const QDateTime& date)
{
    return date.isValid() ? QJsonValue(date.toString(Qt::ISODate)) : QJsonValue();
}

QJsonValue link(const QString& path, koReferenceTypes::FileState state, const QString& dateKey,
                const QDateTime& modified, const QDateTime& made, const QString& owner)
{
    if (state == koReferenceTypes::NoFile)
        return QJsonValue();
    return QJsonObject{{QStringLiteral("path"), koReferenceJson::path(path)},
                       {QStringLiteral("state"), koReferenceJson::fileState(state)},
                       {QStringLiteral("modified"), date(modified)},
                       {dateKey, date(made)},
                       {QStringLiteral("owner"), owner}};
}

} // namespace

QJsonObject koReferenceJson::reference(const kodReferenceNode& reference)
{
    const bool loaded = reference.getState() == koReferenceTypes::Loaded;
    return {{QStringLiteral("name"), reference.getName()},
            {QStringLiteral("scenePath"), koNodeInformation::scenePath(reference)},
            {QStringLiteral("state"), loaded ? QStringLiteral("loaded") : QStringLiteral("unloaded")},
            {QStringLiteral("smart"),
             link(reference.getSmartPath(), reference.getSmartFileState(), QStringLiteral("created"),
                  reference.getSmartLastModified(), reference.getSmartCreationDate(), reference.getSmartOwner())},
            {QStringLiteral("source"),
             link(reference.getSourcePath(), reference.getSourceFileState(), QStringLiteral("imported"),
                  reference.getSourceLastModified(), reference.getSourceImportDate(), reference.getSourceOwner())}};
}

QJsonArray koReferenceJson::references(const QList<kodReferenceNode>& references)
{
    QJsonArray array;
    for (const kodReferenceNode& reference : references)
        array.append(koReferenceJson::reference(reference));
    return array;
}

QJsonValue koReferenceJson::fileState(koReferenceTypes::FileState state)
{
    switch (state) {
    case koReferenceTypes::UpToDate:
        return QStringLiteral("up-to-date");
    case koReferenceTypes::OutOfDate:
        return QStringLiteral("out-of-date");
    case koReferenceTypes::Missing:
        return QStringLiteral("missing");
    case koReferenceTypes::Unsaved:
        return QStringLiteral("unsaved");
    case koReferenceTypes::NoFile:
        break;
    }
    return QJsonValue();
}

QJsonValue koReferenceJson::path(const QString& path)
{
    return path.isEmpty() ? QJsonValue() : QJsonValue(QDir::toNativeSeparators(path));
}
