#include <kovis/koIconManager.h>

#include "koOwnedText.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>

namespace {

QString resourcePath(const QString& name)
{
    return QStringLiteral(":/kovis/icons/%1.svg").arg(name);
}

} // namespace

QIcon koIconManager::getIcon(const QString& name, const QString& secondName)
{
    // QIcon parses its file when built; views ask for the same few icons all the time.
    // The caches keep texts made here: a caller's literal goes when its plug-in unloads.
    static QHash<QString, QIcon> icons;
    static QSet<QString> reported;
    const QString found = hasIcon(name) ? name : hasIcon(secondName) ? secondName : QStringLiteral("Fallback");
    if (found != name && !reported.contains(name)) {
        reported.insert(koOwnedText(name));
        qWarning("koIconManager: no icon named '%s'", qPrintable(name));
    }
    const QString path = resourcePath(found);
    auto icon = icons.find(path);
    if (icon == icons.end())
        icon = icons.insert(path, QIcon(path));
    return icon.value();
}

bool koIconManager::hasIcon(const QString& name)
{
    // A name, not a path: "../x" must not reach other resources.
    static const QRegularExpression plainName(QStringLiteral("^[A-Za-z0-9_]+$"));
    return plainName.match(name).hasMatch() && QFile::exists(resourcePath(name));
}
