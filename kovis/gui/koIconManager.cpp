#include <kovis/koIconManager.h>

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
    static QHash<QString, QIcon> icons;
    static QSet<QString> reported;
    const QString found = hasIcon(name) ? name : hasIcon(secondName) ? secondName : QStringLiteral("Fallback");
    if (found != name && !reported.contains(name)) {
        reported.insert(name);
        qWarning("koIconManager: no icon named '%s'", qPrintable(name));
    }
    auto icon = icons.find(found);
    if (icon == icons.end())
        icon = icons.insert(found, QIcon(resourcePath(found)));
    return icon.value();
}

bool koIconManager::hasIcon(const QString& name)
{
    // A name, not a path: "../x" must not reach other resources.
    static const QRegularExpression plainName(QStringLiteral("^[A-Za-z0-9_]+$"));
    return plainName.match(name).hasMatch() && QFile::exists(resourcePath(name));
}
